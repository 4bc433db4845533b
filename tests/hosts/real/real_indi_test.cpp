// The INDI host against Debian's server and simulators, in real time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "hosts/indi/host.h"
#include "hosts/real_server/indi_server.h"
#include "hosts/tcp_stream.h"
#include "platform/queued_event_loop.h"

namespace vantrel::hosts::indi {
namespace {

using namespace std::chrono_literals;
using platform::FitsBytes;
using platform::Milliseconds;
using Progress = platform::CameraHardware::Progress;

constexpr const char* kMount = "Telescope Simulator";
constexpr const char* kCamera = "CCD Simulator";

class RealIndiTest : public testing::Test {
  protected:
    std::string progId(const char* device) const {
        return DeviceId{{"localhost", server.port()}, device}.progId();
    }

    /// The server needs a moment before it listens.
    template <typename Hardware>
    void connect(Hardware& hardware) {
        std::string problem = "not tried";
        for (int attempt = 0; attempt < 50 && !problem.empty(); ++attempt) {
            try {
                hardware.connect();
                problem.clear();
            } catch (const std::exception& error) {
                problem = error.what();
                loop.sleep(200ms);
            }
        }
        ASSERT_EQ(problem, "") << server.log();
    }
    bool comes(const std::function<bool()>& what, Milliseconds timeOut = 60s) {
        const Milliseconds latest = time.sinceStart() + timeOut;
        while (!what() && time.sinceStart() < latest) loop.sleep(20ms);
        return what();
    }
    FitsBytes expose(platform::CameraHardware& camera, const platform::CameraOrder& order) {
        camera.start(order);
        comes(
            [&] { return camera.progress() == Progress::kReady || camera.progress() == Progress::kFailed; });
        return std::get<FitsBytes>(camera.take());
    }
    static std::string beginning(const FitsBytes& picture) {
        return {reinterpret_cast<const char*>(picture.bytes.data()),
                std::min<std::size_t>(picture.bytes.size(), 30)};
    }

    headless::SystemTime time{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    PumpedWait wait{loop, calls};
    TcpStreams streams{loop};
    std::vector<std::string> told;
    Surroundings surroundings{
        loop, streams, wait, [this](const std::string& line) { told.push_back(line); }, {}};
    test::IndiServer server;
    IndiHost host{surroundings, {}};
    Servers servers{surroundings};
};

TEST_F(RealIndiTest, MountSlewsStopsAndRefuses) {
    Mount mount(surroundings, servers.client({"localhost", server.port()}), kMount, [] {
        return MountOptions{
            .port = "/dev/null", .baudRate = "19200", .site = DriverSite{50, -10, 300}, .setTime = true};
    });
    connect(mount);
    EXPECT_EQ(mount.site().latitude, 50);
    EXPECT_EQ(mount.site().longitude, -10);
    if (mount.parked()) mount.unpark();
    const MountPosition here = mount.position();
    const MountPosition there{here.rightAscension, here.declination - 8};
    mount.slewTo(there);
    EXPECT_TRUE(mount.slewing());
    EXPECT_TRUE(comes([&] { return !mount.slewing(); }));
    EXPECT_NEAR(mount.position().declination, there.declination, 0.01);
    mount.slewTo({there.rightAscension, there.declination - 60});
    EXPECT_TRUE(comes([&] { return mount.position().declination < there.declination - 5; }));
    mount.abort();
    EXPECT_TRUE(comes([&] { return !mount.slewing(); }, 5s));
    EXPECT_GT(mount.position().declination, there.declination - 50);
    mount.setTracking(true);
    EXPECT_TRUE(mount.tracking());
    mount.setTracking(false);
    EXPECT_FALSE(mount.tracking());
    mount.disconnect();
    EXPECT_FALSE(mount.connected());
}

TEST_F(RealIndiTest, CameraGivesPicturesAndRefuses) {
    const auto camera = host.camera(progId(kCamera));
    connect(*camera);
    EXPECT_EQ(camera->facts().width, 1280U);
    EXPECT_TRUE(comes([&] { return camera->facts().filters.size() > 3; })) << "its wheel may be told later";
    FitsBytes picture = expose(*camera, {.seconds = 1});
    EXPECT_EQ(beginning(picture), "SIMPLE  =                    T");
    EXPECT_FALSE(picture.tileCompressed);
    EXPECT_GT(picture.bytes.size(), 2'600'000U);
    EXPECT_EQ(picture.bytes.size() % 2880, 0U);
    picture = expose(*camera, {.seconds = 0.2, .binX = 2, .binY = 2, .filter = 2});
    EXPECT_LT(picture.bytes.size(), 700'000U);
    told.clear();
    picture = expose(*camera, {.seconds = 0.2, .binX = 3, .binY = 3});
    EXPECT_LT(picture.bytes.size(), 700'000U);
    ASSERT_FALSE(told.empty()) << "the simulator can't bin so";
    EXPECT_EQ(
        told.back(),
        "CCD Simulator doesn't take binning 3, but 2: the image scale has to be that of it (CCD Simulator "
        "refuses binning 3 x 3: 3x3 binning is not supported.)");
    camera->set(platform::CameraHardware::Level::kGain, 42);
    camera->set(platform::CameraHardware::Level::kOffset, 7);
    EXPECT_EQ(camera->facts().gain->value, 42);
    EXPECT_EQ(camera->facts().offset->value, 7);
    camera->cool(-5);
    EXPECT_EQ(camera->facts().coolsTo, -5);
    EXPECT_EQ(camera->facts().cooling, true);
    camera->start({.seconds = 100});
    camera->abort();
    picture = expose(*camera, {.seconds = 1, .frame = platform::CameraOrder::Frame::kDark});
    EXPECT_GT(picture.bytes.size(), 2'600'000U);
    const auto client = servers.client({"localhost", server.port()});
    const auto kept = client->keepOpen();
    ASSERT_TRUE(comes([&] { return client->find(kCamera, "CCD_COMPRESSION") != nullptr; }));
    client->setSwitch(kCamera, "CCD_COMPRESSION", "INDI_ENABLED");
    loop.sleep(100ms);
    picture = expose(*camera, {.seconds = 1});
    EXPECT_TRUE(picture.tileCompressed);
    EXPECT_EQ(beginning(picture), "SIMPLE  =                    T");
    EXPECT_EQ(picture.bytes.size() % 2880, 0U);
    EXPECT_LT(picture.bytes.size(), 2'000'000U);
}

// What the program was told tells more than its state: it may be back within milliseconds.
TEST_F(RealIndiTest, ComesBackAfterDriverAndServer) {
    Mount mount(surroundings, servers.client({"localhost", server.port()}), kMount,
                [] { return MountOptions(); });
    const auto camera = host.camera(progId(kCamera));
    connect(mount);
    connect(*camera);
    const auto comesBack = [&](const std::vector<std::string>& devices) {
        const bool back = comes([&] {
            return std::all_of(devices.begin(), devices.end(), [&](const std::string& device) {
                return std::count(told.begin(), told.end(), device + " is connected again") > 0;
            });
        });
        if (!back)
            for (const std::string& line : told) ADD_FAILURE() << line;
        told.clear();
        return back;
    };
    const auto exposes = [&] { return expose(*camera, {.seconds = 0.5}).bytes.size() > 2'600'000; };
    server.killDriver("indi_simulator_ccd");
    ASSERT_TRUE(comesBack({kCamera}));
    EXPECT_TRUE(exposes());
    server.killDriver("indi_simulator_telescope");
    ASSERT_TRUE(comesBack({kMount}));
    EXPECT_TRUE(mount.connected());
    mount.position();
    server.kill();
    ASSERT_TRUE(comes([&] { return !mount.connected() && !camera->connected(); }));
    server.start();
    ASSERT_TRUE(comesBack({kMount, kCamera})) << server.log();
    EXPECT_TRUE(exposes());
    server.freeze(true);
    // It is connected, and says nothing. Each of the two has a connection of its own, and notices by itself.
    EXPECT_TRUE(comes([&] { return !mount.connected() && !camera->connected(); }));
    server.freeze(false);
    ASSERT_TRUE(comesBack({kMount, kCamera})) << server.log();
    EXPECT_TRUE(exposes());
}

}  // namespace
}  // namespace vantrel::hosts::indi
