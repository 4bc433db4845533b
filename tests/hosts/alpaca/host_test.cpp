#include "hosts/alpaca/host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "platform/settings_root.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using test::Fault;
using testing::ElementsAre;
using testing::HasSubstr;

struct HostTest : testing::Test, test::AlpacaWorld {
    HostTest() {
        test::FakeServer& server = servers["10.0.0.7:11111"];
        server.values["management/v1/description"] = {{"ServerName", "Observatory"}};
        server.list({{"The mount", "Telescope", 0, "A1"},
                     {"The camera", "Camera", 1, "C1"},
                     {"The wheel", "FilterWheel", 0, "F1"}});
        server.fill("telescope/0/", R"({"connected": true, "rightascension": 5, "declination": 40})");
        server.fill("camera/1/", R"({"connected": true, "cameraxsize": 10, "cameraysize": 20})");
        server.fill("filterwheel/0/", R"({"connected": true, "names": ["R", "G"]})");
        datagrams.push_back({5ms, {"10.0.0.7", R"({"AlpacaPort":11111})"}});
    }

    Host host() { return {surroundings, settings, classes}; }
    static std::vector<std::string> idsOf(const std::vector<DeviceRecord>& devices) {
        std::vector<std::string> ids;
        ids.reserve(devices.size());
        for (const DeviceRecord& device : devices) ids.push_back(device.id());
        return ids;
    }
    std::optional<std::string> stored() { return settings.read("Hosts", "AlpacaDevices"); }

    platform::MemorySettings settings;
    platform::ClassRegistry classes;
};

TEST_F(HostTest, FindsRemembersAndDrivesATelescope) {
    {
        Host first = host();
        const auto found = first.search();
        EXPECT_THAT(idsOf(found),
                    ElementsAre("Alpaca:A1/telescope", "Alpaca:C1/camera", "Alpaca:F1/filterwheel"));
        EXPECT_TRUE(classes.installed("Telescope").empty()) << "what was found isn't chosen yet";
        EXPECT_EQ(first.remember(found[0]), "Alpaca:A1/telescope");
    }
    classes.uninstall("Alpaca:A1/telescope");
    const auto before = servers["10.0.0.7:11111"].requests.size();

    Host second = host();
    EXPECT_THAT(classes.installed("Telescope"), ElementsAre("Alpaca:A1/telescope"));
    EXPECT_EQ(classes.profileDescription("Telescope", "alpaca:a1/TELESCOPE"),
              "The mount (Alpaca, Observatory)");
    const auto mount = classes.create("Alpaca:A1/telescope");
    EXPECT_EQ(servers["10.0.0.7:11111"].requests.size(), before) << "nobody was asked so far";
    mount->put("Connected", true);
    EXPECT_EQ(mount->get("Declination").toDouble(), 40);
}

TEST_F(HostTest, RemembersWhereADeviceWasFound) {
    Host first = host();
    first.remember({"telescope", "A1", "Old name", {"10.0.0.50", 80}, 7});
    classes.create("Alpaca:A1/telescope")->put("Connected", true);
    EXPECT_THAT(*stored(), HasSubstr("10.0.0.7"));
    EXPECT_THAT(*stored(), Not(HasSubstr("10.0.0.50")));
    EXPECT_EQ(first.known("telescope")[0].name, "The mount");
    EXPECT_EQ(host().known("telescope")[0].server.text(), "10.0.0.7:11111");
}

TEST_F(HostTest, ListsWhatATypedServerHas) {
    Host here = host();
    EXPECT_EQ(idsOf(here.devicesAt({"10.0.0.7", 11111})).size(), 3U);
    servers["10.0.0.7:11111"].faults[""] = Fault::kNotFound;
    EXPECT_THROW(here.devicesAt({"10.0.0.7", 11111}), UnknownMember);
    EXPECT_THAT(test::refusalOf<ServerError>([&] {
                    here.devicesAt({"10.0.0.8", 11111});
                }),
                HasSubstr("can't be reached"));
    // Then type and number are typed as well.
    EXPECT_EQ(here.remember({"telescope", "", "Typed", {"10.0.0.7", 11111}, 0}),
              "Alpaca:10.0.0.7:11111/telescope/0");
    servers["10.0.0.7:11111"].faults.clear();
    const auto mount = classes.create("Alpaca:10.0.0.7:11111/telescope/0");
    mount->put("Connected", true);
    EXPECT_TRUE(mount->get("Connected").toBool()) << "though the list doesn't have it by that name";
}

TEST_F(HostTest, DrivesCamerasWithTheirWheels) {
    Host here = host();
    here.remember({"camera", "C1", "The camera", {"10.0.0.7", 11111}, 0});
    EXPECT_TRUE(classes.installed("Telescope").empty());
    const auto camera = here.camera("Alpaca:C1/camera");
    camera->connect();
    EXPECT_EQ(camera->facts().height, 20U);
    EXPECT_THAT(camera->facts().filters, ElementsAre("R", "G"));
    EXPECT_EQ(test::refusalOf<std::runtime_error>([&] { here.camera("Alpaca:X/camera"); }),
              "There is no Alpaca camera \"Alpaca:X/camera\".");

    // A wheel that was chosen goes before the first in the list; without a list there is none.
    servers["10.0.0.7:11111"].faults["management/v1/configureddevices"] = Fault::kNotFound;
    camera->disconnect();
    camera->connect();
    EXPECT_TRUE(camera->facts().filters.empty());
    here.remember({"filterwheel", "", "Typed", {"10.0.0.7", 11111}, 0});
    camera->disconnect();
    camera->connect();
    EXPECT_THAT(camera->facts().filters, ElementsAre("R", "G"));
}

TEST_F(HostTest, RemembersNoMoreThanAHundredAndForgets) {
    Host here = host();
    for (int i = 0; i < 150; ++i)
        here.remember({"telescope", "M" + std::to_string(i), "Mount", {"10.0.0.7", 11111}, i});
    EXPECT_EQ(here.known().size(), 100U);
    EXPECT_EQ(classes.installed("Telescope").size(), 100U);
    EXPECT_EQ(here.known()[0].uniqueId, "M149");
    here.remember({"telescope", "M149", "Mount", {"10.0.0.7", 11111}, 1});
    here.forget("Alpaca:M149/telescope");
    EXPECT_EQ(here.known().size(), 99U) << "it was known once";
    EXPECT_FALSE(classes.isInstalled("Alpaca:M149/telescope"));
    EXPECT_THAT(*stored(), Not(HasSubstr("M149")));
}

TEST_F(HostTest, ReadsWhatMakesSenseOfTheSettings) {
    for (const char* text : {"", "[", "{}", "7", "null"}) {
        settings.write("Hosts", "AlpacaDevices", text);
        EXPECT_TRUE(host().known().empty()) << text;
    }
    settings.write(
        "Hosts", "AlpacaDevices",
        R"([{"DeviceType":"telescope","DeviceNumber":1,"UniqueID":"A1","DeviceName":"M","Host":"h","Port":80},
                       {"DeviceType":"telescope","DeviceNumber":1,"UniqueID":"A2","DeviceName":"M","Host":"h/x","Port":80},
                       {"DeviceType":"telescope","DeviceNumber":1,"UniqueID":"A3","DeviceName":"M","Host":"h","Port":0},
                       {"DeviceType":"telescope","DeviceNumber":1,"UniqueID":"A4","DeviceName":"M","Port":80}, 5])");
    EXPECT_THAT(idsOf(host().known()), ElementsAre("Alpaca:A1/telescope"));
}

TEST_F(HostTest, WorksOnWhenTheSettingsCantBeWritten) {
    struct FullDisk : platform::MemorySettings {
        void write(const std::string&, const std::string&, const std::string&) override {
            throw std::runtime_error("no space left");
        }
    } full;
    Host here(surroundings, full, classes);
    here.remember({"telescope", "A1", "The mount", {"10.0.0.7", 11111}, 0});
    EXPECT_EQ(told("stored"), "The Alpaca devices can't be stored: no space left");
    EXPECT_TRUE(classes.isInstalled("Alpaca:A1/telescope"));
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
