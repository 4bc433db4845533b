#include "hosts/alpaca/device_link.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "hosts/alpaca/device_error.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using test::Fault;
using enum test::Fault;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kList = "management/v1/configureddevices";
const std::string kConnected = "telescope/3/connected";
const std::string kConnecting = "telescope/3/connecting";
const std::string kVersion = "telescope/3/interfaceversion";
const std::string kConnect = "PUT telescope/3/connect";

/// A server with one mount under number 3.
struct DeviceLinkTest : testing::Test, test::AlpacaWorld {
    DeviceLinkTest() { fill(servers["10.0.0.7:11111"], 3); }

    /// A mount of Platform 6, that is connected by a property.
    void fill(test::FakeServer& server, int number) {
        const std::string mount = "telescope/" + std::to_string(number) + "/";
        server.list({{"The mount", "Telescope", number, "A1"}});
        server.values["management/v1/description"] = {{"ServerName", "S"}};
        server.fill(mount, R"({"interfaceversion": 3, "connected": false, "declination": 40})");
    }
    /// Adds what Platform 7 has; connecting takes a while.
    void makePlatform7(platform::Milliseconds takes) {
        server().values["telescope/3/interfaceversion"] = 4;
        server().values["telescope/3/connecting"] = false;
        server().commands["telescope/3/connect"] = [this, takes](const auto&) {
            server().values["telescope/3/connecting"] = true;
            connected = loop.after(takes, [this] {
                server().values["telescope/3/connecting"] = false;
                server().values["telescope/3/connected"] = true;
            });
        };
        server().commands["telescope/3/disconnect"] = [this](const auto&) {
            server().values["telescope/3/connected"] = false;
        };
    }

    test::FakeServer& server() { return servers["10.0.0.7:11111"]; }
    std::string refusal() {
        return test::refusalOf<std::runtime_error>([&] { link.connect(); });
    }

    DeviceRecord record{"telescope", "A1", "The mount", {"10.0.0.7", 11111}, 3, "S"};
    std::vector<DeviceRecord> moves;
    DeviceLink link{surroundings, record, [this](const DeviceRecord& device) { moves.push_back(device); }};
    platform::TimerHandle connected;
};

// ---- connecting

TEST_F(DeviceLinkTest, ConnectsAndDisconnectsByTheProperty) {
    link.connect();
    EXPECT_TRUE(link.connected());
    EXPECT_EQ(link.interfaceVersion(), 3);
    EXPECT_EQ(link.get("declination"), Json(40));
    link.disconnect();
    EXPECT_FALSE(link.connected());
    EXPECT_THAT(server().commandLines(), ElementsAre("PUT telescope/3/connected?Connected=True",
                                                     "PUT telescope/3/connected?Connected=False"));
    EXPECT_EQ(test::refusalOf<std::runtime_error>([&] { link.get("declination"); }),
              "The mount is not connected.");
    EXPECT_TRUE(lines.empty());
    const auto requests = server().requests.size();
    loop.sleep(1h);
    EXPECT_EQ(server().requests.size(), requests) << "asks nobody any more";
}

TEST_F(DeviceLinkTest, ConnectsInTheBackgroundWhereTheDeviceCan) {
    makePlatform7(12s);
    link.connect();
    EXPECT_TRUE(link.connected());
    EXPECT_GE(now(), 12s);
    EXPECT_LE(now(), 13s);
    link.disconnect();
    EXPECT_THAT(server().commandLines(), ElementsAre(kConnect, "PUT telescope/3/disconnect"));
}

TEST_F(DeviceLinkTest, TakesADeviceThatIsConnectedAsItIs) {
    server().values["telescope/3/connected"] = true;
    link.connect();
    EXPECT_THAT(server().commandLines(), ElementsAre());
    const auto requests = server().requests.size();
    link.connect();
    EXPECT_EQ(server().requests.size(), requests) << "answers at once";
}

TEST_F(DeviceLinkTest, FaultsInConnectingAreSurvivedOrTold) {
    const struct {
        const char* why;
        std::map<std::string, Fault> faults;
        const char* says;  // empty: it connects nevertheless
    } cases[] = {
        {"nobody listens", {{"", kRefused}}, "can't be reached: is it running"},
        {"silence", {{"", kSilence}}, "doesn't answer"},
        {"fails at everything", {{"", kServerFault}}, "failed: Traceback"},
        {"has no list", {{kList, kNotFound}}, ""},
        {"doesn't know the device", {{"", kNotFound}}, "Not Found"},
        {"the list is no list", {{kList, kWrongType}}, "doesn't have the device \"The mount\" any more"},
        {"no interface version", {{kVersion, kNotFound}}, ""},
        {"silent interface version", {{kVersion, kSilence}}, "doesn't answer"},
        {"a text for an interface version", {{kVersion, kWrongType}}, ""},
        {"connect isn't implemented", {{kConnect, kNotImplemented}}, ""},
        {"connect isn't known", {{kConnect, kNotFound}}, ""},
        {"the driver can't connect", {{kConnect, kDeviceError}}, "The gears are stuck"},
        {"connect isn't answered", {{kConnect, kSilence}}, "doesn't answer"},
        {"fails while connecting", {{kConnecting, kDeviceError}}, "The gears are stuck"},
        {"dies while connecting", {{kConnecting, kRefused}}, "can't be reached"},
        {"connected isn't known", {{kConnected, kNotFound}}, "Not Found"},
        {"connected is nonsense", {{kConnected, kWrongType}}, "says that it isn't connected"},
    };

    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        server() = {};
        fill(server(), 3);
        makePlatform7(1s);
        server().faults = c.faults;
        const auto start = now();
        const std::string says = refusal();
        if (*c.says == '\0')
            EXPECT_EQ(says, "");
        else
            EXPECT_THAT(says, HasSubstr(c.says));
        EXPECT_EQ(link.connected(), says.empty());
        EXPECT_LE(now() - start, 60s);
        // Whatever happened, the next trial is a fresh one.
        server().faults.clear();
        if (!link.connected()) link.connect();
        EXPECT_TRUE(link.connected());
        link.disconnect();
    }
}

TEST_F(DeviceLinkTest, GivesUpADeviceThatConnectsForEver) {
    makePlatform7(1h);
    EXPECT_EQ(refusal(), "The mount has been connecting for half a minute.");
    EXPECT_LE(now(), 35s);
    const auto stop = loop.after(4s, [this] { stopped = true; });
    const auto before = now();
    EXPECT_THROW(link.connect(), GivenUp);
    EXPECT_LE(now() - before, 4100ms);
    EXPECT_FALSE(link.connected());
    EXPECT_EQ(http.underWay(), 0U);
}

TEST_F(DeviceLinkTest, MayBeAskedTwiceToConnect) {
    makePlatform7(5s);
    const auto again = loop.after(2s, [this] { link.connect(); });
    link.connect();
    EXPECT_TRUE(link.connected());
    EXPECT_THAT(server().commandLines(), ElementsAre(kConnect));
}

TEST_F(DeviceLinkTest, MayBeDisconnectedWhileItConnects) {
    makePlatform7(5s);
    const auto off = loop.after(2s, [this] { link.disconnect(); });
    EXPECT_EQ(refusal(), "The mount was disconnected meanwhile.");
    EXPECT_FALSE(link.connected());
}

// ---- devices that move

TEST_F(DeviceLinkTest, TakesTheNumberFromTheServersList) {
    fill(server(), 5);
    link.connect();
    ASSERT_EQ(moves.size(), 1U);
    EXPECT_EQ(moves[0].number, 5);
    EXPECT_THAT(server().commandLines(), ElementsAre("PUT telescope/5/connected?Connected=True"));
}

TEST_F(DeviceLinkTest, SearchesTheNetworkForADeviceThatIsNotWhereItWas) {
    servers.clear();
    fill(servers["10.0.0.99:80"], 1);
    datagrams.push_back({5ms, {"10.0.0.99", R"({"AlpacaPort":80})"}});
    link.connect();
    EXPECT_TRUE(link.connected());
    ASSERT_EQ(moves.size(), 1U);
    EXPECT_EQ(moves[0].server.text(), "10.0.0.99:80");
    EXPECT_EQ(moves[0].number, 1);
    EXPECT_EQ(searches.size(), 1U);
}

// ---- servers that go and come back

TEST_F(DeviceLinkTest, IsLostAndBackWithItsServer) {
    link.connect();
    server().faults[""] = kRefused;
    loop.sleep(5s);
    EXPECT_FALSE(link.connected());
    EXPECT_EQ(told("lost"),
              "The connection to The mount is lost: The Alpaca server at 10.0.0.7:11111 can't be "
              "reached: is it running, and in this network?");
    const auto before = now();
    EXPECT_THAT(test::refusalOf<std::runtime_error>([&] { link.get("declination"); }),
                HasSubstr("is lost: The Alpaca"));
    EXPECT_EQ(now(), before) << "nobody waits for a server that is known to be gone";

    // It comes back with the mount disconnected, at another address and under another number.
    servers.clear();
    fill(servers["10.0.0.99:80"], 8);
    datagrams.push_back({5ms, {"10.0.0.99", R"({"AlpacaPort":80})"}});
    loop.sleep(15s);
    EXPECT_TRUE(link.connected());
    EXPECT_EQ(told("back"), "The mount is back.");
    EXPECT_EQ(link.get("declination"), Json(40));
    EXPECT_EQ(lines.size(), 2U);
}

TEST_F(DeviceLinkTest, ConnectsAgainWhatOthersDisconnected) {
    link.connect();
    server().values["telescope/3/connected"] = false;
    loop.sleep(3s);
    EXPECT_FALSE(link.connected());
    EXPECT_NE(told("was disconnected at its server"), "");
    loop.sleep(10s);
    EXPECT_TRUE(link.connected());
}

TEST_F(DeviceLinkTest, BearsASingleTrouble) {
    link.connect();
    for (const Fault fault : {kSilence, kServerFault, kDeviceError}) {
        server().faults["telescope/3/declination"] = fault;
        EXPECT_THROW(link.get("declination"), std::runtime_error);
        server().faults.clear();
        loop.sleep(3s);
        EXPECT_TRUE(link.connected());
    }
    EXPECT_TRUE(lines.empty());
}

TEST_F(DeviceLinkTest, IsOffAlsoWhenTheServerDoesntHear) {
    link.connect();
    server().faults[""] = kSilence;
    link.disconnect();
    EXPECT_FALSE(link.connected());
    EXPECT_LE(now(), 7s);
    EXPECT_NE(told("doesn't answer"), "");
}

TEST_F(DeviceLinkTest, LostForADayCostsNothing) {
    link.connect();
    server().faults[""] = kSilence;
    std::size_t most = 0;
    const auto watch = loop.every(1s, [&] { most = std::max(most, http.underWay()); });
    loop.sleep(24h);
    EXPECT_LE(most, 3U);
    EXPECT_EQ(lines.size(), 1U);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
