#include "hosts/alpaca/discovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using test::Fault;
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
    static Json device(const std::string& type, int number, const std::string& id) {
        return {{"DeviceName", type + " of " + id},
                {"DeviceType", type},
                {"DeviceNumber", number},
                {"UniqueID", id}};
    }
    test::FakeServer& serverAt(const std::string& host, const std::vector<Json>& devices) {
        test::FakeServer& server = servers[host + ":11111"];
        server.values["management/v1/configureddevices"] = Json(devices);
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
    const std::vector<Json> devices = {device("Telescope", 0, "A1")};
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
    serverAt("10.0.0.2", {device("Telescope", 0, "B1")}).faults["management/v1/description"] =
        Fault::kNotFound;
    serverAt("10.0.0.3", {device("Telescope", 0, "C1")}).faults[""] = Fault::kSilence;
    serverAt("10.0.0.4", {}).values["management/v1/configureddevices"] = "no list";
    serverAt("10.0.0.5", {device("Telescope", 0, "E1")}).faults[""] = Fault::kWebPage;
    serverAt("10.0.0.6", {device("Telescope", 0, "F1")}).faults["management/v1/configureddevices"] =
        Fault::kCut;
    datagrams.push_back({1ms, {"10.0.0.66", R"({"AlpacaPort":11111})"}});  // nobody listens there
    datagrams.push_back({1ms, {"10.0.0.67", "\xff\xfe rubbish"}});
    datagrams.push_back({10s, {"10.0.0.68", R"({"AlpacaPort":11111})"}});
    EXPECT_THAT(search(), ElementsAre("Alpaca:A1/telescope at 10.0.0.1:11111",
                                      "Alpaca:B1/telescope at 10.0.0.2:11111"));
    EXPECT_EQ(devices[0].serverName, "A plain text");
    EXPECT_LE(took, 8s);
    EXPECT_EQ(http.underWay(), 0U);
}

TEST_F(DiscoveryTest, EndsWhenNobodyAnswers) {
    EXPECT_TRUE(search().empty());
    EXPECT_LE(took, 1600ms);
}

TEST_F(DiscoveryTest, EndsAtOnceWithTheWantedDevice) {
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
    serverAt("10.0.0.7", {device("Telescope", 0, "A1")}).faults[""] = Fault::kSilence;
    bool heard = false;
    {
        const Discovery discovery(surroundings, [&](const auto&) { heard = true; });
        loop.sleep(500ms);
    }
    EXPECT_EQ(http.underWay(), 0U);
    loop.sleep(10s);
    EXPECT_FALSE(heard);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
