// The chooser and the profile on a machine with a few drivers.

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "helpers/chooser_object.h"
#include "helpers/profile_object.h"

namespace vantrel::helpers {
namespace {

using platform::Arguments;
using testing::ElementsAre;

class DriversTest : public testing::Test {
  protected:
    DriversTest() {
        classes_.install("One.Telescope", {nullptr, "", "Telescope", "The first mount"});
        classes_.install("Two.Telescope", {nullptr, "", "Telescope", "The second mount"});
        classes_.install("One.Focuser", {nullptr, "", "Focuser", "A focuser"});
        classes_.install("Some.Program", {nullptr, "", "", ""});
    }

    platform::ClassRegistry classes_;
    platform::MemorySettings store_;
    ProfileObject profile_{classes_, store_};
};

TEST_F(DriversTest, ChooserOffersTheDriversOfTheType) {
    std::vector<std::string> shown;
    ChooserObject chooser(classes_,
                          [&](const platform::Words& title, const std::vector<DriverChoice>& drivers,
                              const std::string& current) {
                              shown = {title.english(), current};
                              for (const DriverChoice& driver : drivers)
                                  shown.push_back(driver.progId + "=" + driver.description);
                              return "Two.Telescope";
                          });
    EXPECT_EQ(chooser.call("Choose", {"One.Telescope"}).toText(), "Two.Telescope");
    EXPECT_THAT(shown, ElementsAre("Telescope Chooser", "One.Telescope", "One.Telescope=The first mount",
                                   "Two.Telescope=The second mount"));
    chooser.put("DeviceType", "Focuser");
    chooser.call("Choose", {""});
    EXPECT_THAT(shown, ElementsAre("Focuser Chooser", "", "One.Focuser=A focuser"));
}

TEST_F(DriversTest, CancellingTheChooserReturnsTheCurrentDriver) {
    const ChooserDialog dialogs[] = {[](const auto&, const auto&, const auto&) { return ""; }, nullptr};
    for (const ChooserDialog& dialog : dialogs)
        for (const char* current : {"Two.Telescope", "Gone.Telescope", ""})
            EXPECT_EQ(ChooserObject(classes_, dialog).call("Choose", {current}).toText(), current);
}

TEST_F(DriversTest, ProfileKnowsDescriptionsAndKeepsValues) {
    profile_.call("WriteValue", {"One.Telescope", "Port", "COM3"});
    profile_.call("WriteValue", {"One.Telescope", "Port", "COM4", "Spare"});
    const struct {
        Arguments arguments;
        const char* value;
    } cases[] = {
        {{"two.telescope", "", ""}, "The second mount"},  {{"One.Telescope", "Speed"}, ""},
        {{"One.Telescope", "Speed", "", "9600"}, "9600"}, {{"One.Telescope", "Port", "", "COM1"}, "COM3"},
        {{"One.Telescope", "Port", "Spare"}, "COM4"},     {{"Two.Telescope", "Port"}, ""}};
    for (const auto& c : cases) EXPECT_EQ(profile_.call("GetValue", c.arguments).toText(), c.value);
    profile_.call("WriteValue", {"One.Telescope", "", "My mount"});  // replaces the installed description
    EXPECT_EQ(profile_.call("GetValue", {"One.Telescope", ""}).toText(), "My mount");
    for (const char* use : {"GetValue", "WriteValue"})
        EXPECT_THROW(profile_.call(use, {"Nobody.Telescope", "", ""}), platform::AutomationError) << use;
}

TEST_F(DriversTest, ProfileListsDrivers) {
    EXPECT_TRUE(profile_.call("IsRegistered", {"one.telescope"}).toBool());
    EXPECT_FALSE(profile_.call("IsRegistered", {"One.Focuser"}).toBool());
    EXPECT_FALSE(profile_.call("IsRegistered", {"Some.Program"}).toBool());
    const auto devices = profile_.get("RegisteredDevices").toObject();
    ASSERT_EQ(devices->get("Count").toInt(), 2);
    EXPECT_EQ(devices->call("Item", {2}).toText(), "Two.Telescope");
    for (const int number : {0, 3})
        EXPECT_THROW(devices->call("Item", {number}), platform::AutomationError) << number;
}

}  // namespace
}  // namespace vantrel::helpers
