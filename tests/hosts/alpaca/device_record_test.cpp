#include "hosts/alpaca/device_record.h"

#include <gtest/gtest.h>

namespace vantrel::hosts::alpaca {
namespace {

TEST(ServerAddress, IsReadAsPeopleTypeIt) {
    const struct {
        const char* typed;
        std::optional<ServerAddress> means;
    } cases[] = {
        {"192.168.1.5", ServerAddress{"192.168.1.5", 11111}},
        {" 192.168.1.5:80 ", ServerAddress{"192.168.1.5", 80}},
        {"mount.local:32323", ServerAddress{"mount.local", 32323}},
        {"http://mount:80/", ServerAddress{"mount", 80}},
        {"HTTP://mount", ServerAddress{"mount", 11111}},
        {"::1", ServerAddress{"::1", 11111}},
        {"[::1]", ServerAddress{"::1", 11111}},
        {"[fe80::2%eth0]:80", ServerAddress{"fe80::2%eth0", 80}},
        {"", std::nullopt},
        {":80", std::nullopt},
        {"mount:", std::nullopt},
        {"mount:0", std::nullopt},
        {"mount:65536", std::nullopt},
        {"mount:80x", std::nullopt},
        {"[::1", std::nullopt},
        {"[::1]:", std::nullopt},
        {"[::1]80", std::nullopt},
        {"[mount]:80", std::nullopt},
        {"user@mount", std::nullopt},
        {"mount/path", std::nullopt},
        {"https://mount", std::nullopt},
        {"two words", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(parseServerAddress(c.typed), c.means) << c.typed;
    EXPECT_EQ(parseServerAddress(std::string(300, 'a')), std::nullopt);
}

TEST(DeviceRecord, IsReadAsTyped) {
    const struct {
        const char* typed;
        const char* id;  // empty: it is none
    } cases[] = {{"10.0.0.7:80/telescope/0", "Alpaca:10.0.0.7:80/telescope/0"},
                 {"http://mount/Camera/12", "Alpaca:mount:11111/camera/12"},
                 {"[::1]:80/telescope/1", "Alpaca:[::1]:80/telescope/1"},
                 {"mount", ""},
                 {"mount/telescope", ""},
                 {"/telescope/0", ""},
                 {"telescope/0", ""},
                 {"/", ""},
                 {"//", ""},
                 {"mount/telescope/x", ""},
                 {"mount/telescope/-1", ""},
                 {"mount/../0", ""},
                 {"mount//0", ""}};
    for (const auto& c : cases) {
        const auto device = parseDevice(c.typed);
        EXPECT_EQ(device ? device->id() : "", c.id) << c.typed;
    }
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
}

TEST(DeviceRecord, TakesNoEndlessList) {
    Json list = Json::array();
    for (int i = 0; i < 10'000; ++i) list.push_back({{"DeviceType", "camera"}, {"DeviceNumber", i}});
    EXPECT_EQ(devicesIn(list, {"h", 1}).size(), 200U);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
