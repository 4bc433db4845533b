// The chooser and the profile on a machine with a few drivers.

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "observatory/helpers/chooser_object.h"
#include "observatory/helpers/profile_object.h"

namespace vantrel::observatory {
namespace {

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
    ChooserObject chooser(classes_, [&](const std::string& title, const std::vector<DriverChoice>& drivers,
                                        const std::string& current) {
        shown = {title, current};
        for (const DriverChoice& driver : drivers) shown.push_back(driver.progId + "=" + driver.description);
        return "Two.Telescope";
    });
    EXPECT_EQ(chooser.call("Choose", {"One.Telescope"}).toText(), "Two.Telescope");
    EXPECT_THAT(shown, ElementsAre("Telescope Chooser", "One.Telescope", "One.Telescope=The first mount",
                                   "Two.Telescope=The second mount"));
    chooser.put("DeviceType", "Focuser");
    chooser.call("Choose", {""});
    EXPECT_THAT(shown, ElementsAre("Focuser Chooser", "", "One.Focuser=A focuser"));
}

TEST_F(DriversTest, ProfileKnowsDescriptionsAndKeepsValues) {
    EXPECT_EQ(profile_.call("GetValue", {"two.telescope", "", ""}).toText(), "The second mount");
    EXPECT_EQ(profile_.call("GetValue", {"One.Telescope", "Port"}).toText(), "");
    EXPECT_EQ(profile_.call("GetValue", {"One.Telescope", "Port", "", "COM1"}).toText(), "COM1");
    profile_.call("WriteValue", {"One.Telescope", "Port", "COM3"});
    profile_.call("WriteValue", {"One.Telescope", "Port", "COM4", "Spare"});
    EXPECT_EQ(profile_.call("GetValue", {"One.Telescope", "Port", "", "COM1"}).toText(), "COM3");
    EXPECT_EQ(profile_.call("GetValue", {"One.Telescope", "Port", "Spare"}).toText(), "COM4");
    EXPECT_EQ(profile_.call("GetValue", {"Two.Telescope", "Port"}).toText(), "");

    // A description that was written replaces the installed one.
    profile_.call("WriteValue", {"One.Telescope", "", "My mount"});
    EXPECT_EQ(profile_.call("GetValue", {"One.Telescope", ""}).toText(), "My mount");
}

TEST_F(DriversTest, ProfileListsDrivers) {
    EXPECT_TRUE(profile_.call("IsRegistered", {"one.telescope"}).toBool());
    EXPECT_FALSE(profile_.call("IsRegistered", {"One.Focuser"}).toBool());
    EXPECT_FALSE(profile_.call("IsRegistered", {"Some.Program"}).toBool());
    const auto devices = profile_.get("RegisteredDevices").toObject();
    ASSERT_EQ(devices->get("Count").toInt(), 2);
    EXPECT_EQ(devices->call("Item", {2}).toText(), "Two.Telescope");
    EXPECT_THROW(devices->call("Item", {0}), platform::AutomationError);
    EXPECT_THROW(devices->call("Item", {3}), platform::AutomationError);
    EXPECT_THROW(profile_.call("GetValue", {"Nobody.Telescope", ""}), platform::AutomationError);
}

}  // namespace
}  // namespace vantrel::observatory
