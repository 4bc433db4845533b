#include "hosts/alpaca/discovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "hosts/alpaca/device_record.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using enum test::Fault;
using testing::ElementsAre;

TEST(DiscoveryAnswer, IsAPort) {
    EXPECT_EQ(portIn(R"({"AlpacaPort":11111})"), 11111);
    EXPECT_EQ(portIn("{\"AlpacaPort\": 80, \"more\": []}\r\n"), 80);
    for (const char* answer :
         {"", "alpacadiscovery1", "{}", R"({"AlpacaPort":0})", R"({"AlpacaPort":65536})",
          R"({"AlpacaPort":"80"})", R"({"alpacaport":80})", "[80]", "{\"AlpacaPort\":80"})
        EXPECT_EQ(portIn(answer), std::nullopt) << answer;
}

struct DiscoveryTest : testing::Test, test::AlpacaWorld {
    static test::FakeServer::Listed device(const std::string& type, int number, const std::string& id) {
        return {type + " of " + id, type, number, id};
    }
    test::FakeServer& serverAt(const std::string& host,
                               const std::vector<test::FakeServer::Listed>& devices) {
        test::FakeServer& server = servers[host + ":11111"];
        server.list(devices);
        server.values["management/v1/description"] = {{"ServerName", "Server at " + host}};
        datagrams.push_back({5ms, {host, R"({"AlpacaPort":11111})"}});
        return server;
    }
    std::vector<std::string> search(const std::string& wanted = {}) {
        std::optional<std::vector<DeviceRecord>> found;
        const Discovery discovery(
            surroundings, [&](const std::vector<DeviceRecord>& devices) { found = devices; }, wanted);
        const auto start = now();
        while (!found && now() - start < 1min) loop.sleep(10ms);
        took = now() - start;
        std::vector<std::string> ids;
        for (const DeviceRecord& device : found.value())
            ids.push_back(device.id() + " at " + device.server.text());
        devices = *found;
        return ids;
    }

    std::vector<DeviceRecord> devices;
    platform::Milliseconds took{0};
};

TEST_F(DiscoveryTest, ListsWhatEachServerHas) {
    serverAt("10.0.0.7", {device("Telescope", 0, "A1"), device("Camera", 0, "A2")});
    serverAt("10.0.0.8", {device("camera", 4, "B1")});
    EXPECT_THAT(search(),
                ElementsAre("Alpaca:A1/telescope at 10.0.0.7:11111", "Alpaca:A2/camera at 10.0.0.7:11111",
                            "Alpaca:B1/camera at 10.0.0.8:11111"));
    EXPECT_EQ(devices[0].serverName, "Server at 10.0.0.7");
    EXPECT_EQ(devices[0].name, "Telescope of A1");
    EXPECT_EQ(devices[2].number, 4);
    ASSERT_EQ(searches.size(), 1U);
    EXPECT_EQ(searches[0].port, 32227);
    EXPECT_EQ(searches[0].words, "alpacadiscovery1");
    EXPECT_EQ(searches[0].group, "ff12::a1:9aca");
    EXPECT_LE(took, 1600ms);
}

TEST_F(DiscoveryTest, TakesOneWayToADeviceThatAnswersOnSeveral) {
    const std::vector<test::FakeServer::Listed> devices = {device("Telescope", 0, "A1")};
    serverAt("fe80::7%eth0", devices);
    servers["[fe80::7%25eth0]:11111"] = servers["fe80::7%eth0:11111"];
    serverAt("10.0.0.7", devices);
    serverAt("127.0.0.1", devices);
    datagrams.push_back({50ms, {"10.0.0.7", R"({"AlpacaPort":11111})"}});
    EXPECT_THAT(search(), ElementsAre("Alpaca:A1/telescope at 127.0.0.1:11111"));
    EXPECT_EQ(servers["10.0.0.7:11111"].requests.size(), 2U) << "asked once";
}

TEST_F(DiscoveryTest, SurvivesServersOfEveryKind) {
    serverAt("10.0.0.1", {device("Telescope", 0, "A1")}).values["management/v1/description"] = "A plain text";
    serverAt("10.0.0.2", {device("Telescope", 0, "B1")}).faults["management/v1/description"] = kNotFound;
    serverAt("10.0.0.3", {device("Telescope", 0, "C1")}).faults[""] = kSilence;
    serverAt("10.0.0.4", {}).values["management/v1/configureddevices"] = "no list";
    serverAt("10.0.0.5", {device("Telescope", 0, "E1")}).faults["management/v1/configureddevices"] = kCut;
    datagrams.push_back({1ms, {"10.0.0.66", R"({"AlpacaPort":11111})"}});  // nobody listens there
    datagrams.push_back({1ms, {"10.0.0.67", "\xff\xfe rubbish"}});
    datagrams.push_back({10s, {"10.0.0.68", R"({"AlpacaPort":11111})"}});
    EXPECT_THAT(search(), ElementsAre("Alpaca:A1/telescope at 10.0.0.1:11111",
                                      "Alpaca:B1/telescope at 10.0.0.2:11111"));
    EXPECT_EQ(devices[0].serverName, "A plain text");
    EXPECT_LE(took, 8s);
    EXPECT_EQ(http.underWay(), 0U);
}

TEST_F(DiscoveryTest, EndsAtOnceWithTheWantedDeviceOrWhenNobodyAnswers) {
    EXPECT_TRUE(search().empty());
    EXPECT_LE(took, 1600ms);
    serverAt("10.0.0.7", {device("Telescope", 0, "A1")});
    search("Alpaca:A1/telescope");
    EXPECT_LE(took, 200ms);
}

TEST_F(DiscoveryTest, IsNotFloodedByAnswers) {
    for (int i = 0; i < 1000; ++i)
        datagrams.push_back(
            {1ms,
             {"10.0." + std::to_string(i / 250) + "." + std::to_string(i % 250), R"({"AlpacaPort":11111})"}});
    std::size_t most = 0;
    const auto watch = loop.every(10ms, [&] { most = std::max(most, http.underWay()); });
    search();
    EXPECT_LE(most, 100U) << "two questions to each of fifty servers";
}

TEST_F(DiscoveryTest, CanBeGivenUp) {
    serverAt("10.0.0.7", {device("Telescope", 0, "A1")}).faults[""] = kSilence;
    bool heard = false;
    {
        const Discovery discovery(surroundings, [&](const auto&) { heard = true; });
        loop.sleep(500ms);
    }
    EXPECT_EQ(http.underWay(), 0U);
    loop.sleep(10s);
    EXPECT_FALSE(heard);
}

// ---- device records

TEST(ServerAddress, IsReadAsPeopleTypeIt) {
    const struct {
        const char* typed;
        ServerAddress means;
    } cases[] = {
        {" 192.168.1.5:80 ", ServerAddress{"192.168.1.5", 80}},
        {"http://mount:80/", ServerAddress{"mount", 80}},
        {"HTTP://mount", ServerAddress{"mount", 11111}},
        {"::1", ServerAddress{"::1", 11111}},
        {"[fe80::2%eth0]:80", ServerAddress{"fe80::2%eth0", 80}},
    };
    for (const auto& c : cases) EXPECT_EQ(parseServerAddress(c.typed), c.means) << c.typed;
    const std::string endless(300, 'a');
    for (const char* none :
         {"", ":80", "mount:", "mount:0", "mount:65536", "mount:80x", "[::1", "[::1]:", "[::1]80",
          "[mount]:80", "user@mount", "mount/path", "https://mount", "two words", endless.c_str()})
        EXPECT_EQ(parseServerAddress(none), std::nullopt) << none;
}

TEST(DeviceRecord, IsReadAsTyped) {
    const struct {
        const char* typed;
        const char* id;
    } cases[] = {{"10.0.0.7:80/telescope/0", "Alpaca:10.0.0.7:80/telescope/0"},
                 {"http://mount/Camera/12", "Alpaca:mount:11111/camera/12"},
                 {"[::1]:80/telescope/1", "Alpaca:[::1]:80/telescope/1"}};
    for (const auto& c : cases) {
        const auto device = parseDevice(c.typed);
        EXPECT_EQ(device ? device->id() : "", c.id) << c.typed;
    }
    for (const char* none : {"mount", "mount/telescope", "/telescope/0", "telescope/0", "/", "//",
                             "mount/telescope/x", "mount/telescope/-1", "mount/../0", "mount//0"})
        EXPECT_FALSE(parseDevice(none)) << none;
}

TEST(DeviceRecord, TakesWhatMakesSenseOfAList) {
    const Json list = parseJson(R"([
        {"DeviceName":"My mount","DeviceType":"Telescope","DeviceNumber":3,"UniqueID":"7f5a-1"},
        {"DeviceName":"","DeviceType":"camera","DeviceNumber":0,"UniqueID":""},
        {"DeviceName":"Odd","DeviceType":"Camera","DeviceNumber":1,"UniqueID":"a/b"},
        {"DeviceName":"No number","DeviceType":"Camera","UniqueID":"x"},
        {"DeviceName":"Negative","DeviceType":"Camera","DeviceNumber":-1,"UniqueID":"x"},
        {"DeviceName":"No type","DeviceNumber":1,"UniqueID":"x"},
        {"DeviceName":"Evil","DeviceType":"../../setup","DeviceNumber":1,"UniqueID":"x"},
        "nonsense", 7, null])");
    std::vector<std::string> seen;
    for (const DeviceRecord& device : devicesIn(list, {"10.0.0.7", 80}))
        seen.push_back(device.id() + " " + device.name);
    EXPECT_EQ(seen, (std::vector<std::string>{"Alpaca:7f5a-1/telescope My mount",
                                              "Alpaca:10.0.0.7:80/camera/0 camera 0",
                                              "Alpaca:10.0.0.7:80/camera/1 Odd"}));
    for (const char* other : {"{}", "null", "\"x\"", "[]"})
        EXPECT_TRUE(devicesIn(parseJson(other), {}).empty());
    Json endless = Json::array();
    for (int i = 0; i < 10'000; ++i) endless.push_back({{"DeviceType", "camera"}, {"DeviceNumber", i}});
    EXPECT_EQ(devicesIn(endless, {"h", 1}).size(), 200U);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
