// The devices against the test server, over the loopback address and in real time. What servers do wrong is
// tested beside: on the wire with the transfers, in answers with the replies and each device.

#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "hosts/alpaca/host.h"
#include "hosts/alpaca/server_process.h"
#include "hosts/network_client.h"
#include "platform/queued_event_loop.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using platform::CameraHardware;
using platform::CameraOrder;
using platform::PlainPixels;

struct LoopbackTest : testing::Test {
    // ---- what a program does

    platform::ObjectRef telescope() { return classes.create(remembered("telescope")); }
    std::unique_ptr<CameraHardware> camera() { return host.camera(remembered("camera")); }
    std::string remembered(const std::string& type) {
        for (const DeviceRecord& device : host.devicesAt({"127.0.0.1", server.port}))
            if (device.type == type) return host.remember(device);
        throw std::runtime_error("no " + type + " was listed");
    }
    /// Where the server has no list.
    platform::ObjectRef typedTelescope(int number) {
        return classes.create(host.remember({"telescope", "", "Typed", {"127.0.0.1", server.port}, number}));
    }
    std::unique_ptr<CameraHardware> typedCamera(int number) {
        return host.camera(host.remember({"camera", "", "Typed", {"127.0.0.1", server.port}, number}));
    }

    void slew(const platform::ObjectRef& mount, double ra, double dec) {
        mount->call("SlewToCoordinatesAsync", {ra, dec});
        waitFor([&] { return !mount->get("Slewing").toBool(); });
    }
    platform::ImageArray expose(CameraHardware& camera, const CameraOrder& order = {.seconds = 0.05}) {
        camera.start(order);
        waitFor([&] {
            return camera.progress() == CameraHardware::Progress::kReady ||
                   camera.progress() == CameraHardware::Progress::kFailed;
        });
        return std::get<PlainPixels>(camera.take()).image;
    }
    template <typename Done>
    void waitFor(const Done& done) {
        const auto start = loop.clock().sinceStart();
        while (!done()) {
            ASSERT_LT(loop.clock().sinceStart() - start, 60s);
            loop.sleep(10ms);
        }
    }
    bool wasTold(const std::string& part) const {
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return line.find(part) != std::string::npos; });
    }

    /// Of the pattern that the server's camera sees.
    static double patternAt(std::size_t x, std::size_t y, std::size_t height) {
        return static_cast<double>(1000 + (x + y) % height % 1000);
    }
    static void expectPattern(const platform::ImageArray& image, std::size_t width, std::size_t height) {
        ASSERT_EQ(image.width(), width);
        ASSERT_EQ(image.height(), height);
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t y = 0; y < height; ++y)
                ASSERT_EQ(image.at(x, y), patternAt(x, y, height)) << x << " " << y;
    }

    test::AlpacaServerProcess server{{{"width", 32}, {"height", 24}, {"slewRate", 2000}}};
    headless::SystemTime time{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    NetworkClient network{loop};
    platform::BackgroundThreads background{loop, calls};
    Client client{network, PumpedWait(loop, calls), 4711};
    platform::MemorySettings settings;
    platform::ClassRegistry classes;
    std::vector<std::string> lines;
    Host host{{.loop = loop,
               .client = client,
               .background = background,
               .search = searchNetwork,
               .discoveryPort = [this] { return server.discoveryPort; },
               .equinox = {[](const auto& position, auto) { return position; },
                           [](const auto& position, auto) { return position; }},
               .openPage = [](const std::string&) { return true; },
               .tell = [this](const std::string& line) { lines.push_back(line); }},
              settings,
              classes};
};

TEST_F(LoopbackTest, DrivesServersOfEveryKind) {
    const struct {
        const char* why;
        Json settings;
        bool isListed = true;  // by the server
    } cases[] = {
        {"platform 6", Json::object()},
        {"platform 7", {{"platform", 7}, {"connectSeconds", 0.3}}},
        {"no list of its devices", {{"management", false}}, false},
        {"pictures as JSON", {{"bytesNever", true}}},
    };
    double place = 5;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        server.put("reset");
        server.set(c.settings);
        const auto mount = c.isListed ? telescope() : typedTelescope(0);
        mount->put("Connected", true);
        EXPECT_TRUE(mount->get("Connected").toBool());
        place += 0.1;
        slew(mount, place, 20);
        EXPECT_NEAR(mount->get("RightAscension").toDouble(), place, 1e-6);
        EXPECT_NEAR(mount->get("Declination").toDouble(), 20, 1e-6);
        EXPECT_EQ(mount->get("SiteLatitude").toDouble(), 50);
        const auto eye = c.isListed ? camera() : typedCamera(1);
        eye->connect();
        expectPattern(expose(*eye), 32, 24);
        mount->put("Connected", false);
        eye->disconnect();
        EXPECT_FALSE(eye->connected());
    }
}

TEST_F(LoopbackTest, FindsServersAndDevicesThatMoved) {
    const auto found = host.search();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].id(), "Alpaca:test-telescope/telescope");
    EXPECT_EQ(found[0].serverName, "Test server");
    const std::string id = host.remember({"telescope", "test-telescope", "Old", {"127.0.0.1", 9}, 3});
    const auto mount = classes.create(id);
    mount->put("Connected", true);
    EXPECT_TRUE(mount->get("Connected").toBool());
    EXPECT_EQ(host.known("telescope")[0].server.port, server.port);
}

TEST_F(LoopbackTest, ReadsPartsBinsAndFilters) {
    const auto eye = camera();
    eye->connect();
    EXPECT_EQ(eye->facts().filters.size(), 4U);
    expectPattern(expose(*eye, {.seconds = 0.05, .binX = 2, .binY = 2}), 16, 12);
    expectPattern(expose(*eye, {.seconds = 0.05, .part = CameraOrder::Part{3, 4, 5, 6}, .filter = 2}), 5, 6);
    eye->cool(-10.0);
    eye->start({.seconds = 100});
    eye->abort();
    expectPattern(expose(*eye), 32, 24);
}

TEST_F(LoopbackTest, IsBackAfterItsServerWasStartedAnew) {
    const auto mount = telescope();
    const auto eye = camera();
    mount->put("Connected", true);
    eye->connect();
    server.put("restart");
    server.put("away", {{"seconds", 5}});
    waitFor([&] { return !mount->get("Connected").toBool() && !eye->connected(); });
    EXPECT_TRUE(wasTold("The connection to Test mount is lost"));
    waitFor([&] { return mount->get("Connected").toBool() && eye->connected(); });
    EXPECT_TRUE(wasTold("Test mount is back."));
    slew(mount, 7, 10);
    EXPECT_NEAR(mount->get("RightAscension").toDouble(), 7, 1e-6);
    expectPattern(expose(*eye), 32, 24);
    EXPECT_EQ(host.known("telescope")[0].number, 7);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
