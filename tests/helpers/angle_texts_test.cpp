#include "helpers/angle_texts.h"

#include <limits>
#include <memory>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "helpers/chooser_object.h"
#include "helpers/profile_object.h"
#include "helpers/util_object.h"
#include "platform/queued_event_loop.h"

namespace vantrel::helpers {
namespace {

using platform::Arguments;
using platform::Value;
using testing::ElementsAre;

class UtilTest : public testing::Test {
  protected:
    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    UtilObject util_{loop_};
};

TEST_F(UtilTest, Texts) {
    const struct {
        const char* member;
        Arguments arguments;
        const char* text;
    } cases[] = {
        {"HoursToHMS", {7.5, "h", "m", "s"}, "07h30m00s"},
        {"HoursToHMS", {12.582422, ":", ":", "", 3}, "12:34:56.719"},
        {"HoursToHMS", {1e6}, "1000000:00:00"},
        {"HoursToHMS", {"7.5"}, "07:30:00"},  // settings hold numbers as text
        // Carries: 59.99 s is not 60, and may run through to the units.
        {"HoursToHMS", {1 + 59 / 60.0 + 59.99 / 3600}, "02:00:00"},
        {"HoursToHMS", {1 + 29 / 60.0 + 59.6 / 3600}, "01:30:00"},
        {"HoursToHMS", {1 + 29 / 60.0 + 59.994 / 3600, ":", ":", "", 2}, "01:29:59.99"},
        {"HoursToHMS", {-0.4 / 3600}, "00:00:00"},  // no minus sign before zeros
        {"DegreesToDMS", {-0.5}, "-00° 30' 00\""},
        {"DegreesToDMS", {-45.99999}, "-46° 00' 00\""},
        {"DegreesToDMS", {12.25, " ", " ", " "}, "12 15 00 "},
        {"DegreesToHMS", {112.5}, "07:30:00"},
        {"HoursToHM", {7.51}, "07:31"},
        {"HoursToHM", {7.9999}, "08:00"},
        {"DegreesToHM", {112.5, "h ", "m", 1}, "07h 30.0m"},
        {"DegreesToDM", {-0.25}, "-00° 15'"},
    };
    for (const auto& c : cases) EXPECT_EQ(util_.call(c.member, c.arguments).toText(), c.text) << c.member;
}

TEST_F(UtilTest, TextsRead) {
    const struct {
        const char* member;
        const char* text;
        double value;
    } cases[] = {
        {"HMSToHours", "12:34:56.7", 12 + 34 / 60.0 + 56.7 / 3600},
        {"HMSToDegrees", "07 30 00", 112.5},
        {"DMSToDegrees", "-00° 30' 00\"", -0.5},
        {"DMSToDegrees", "- 0 30", -0.5},
        {"DMSToDegrees", "48,5", 48.5},  // a decimal comma
        {"DMSToDegrees", ".5", 0.5},
        {"DMSToDegrees", "10 - 30", 10.5},  // only a sign before the first number counts
        {"DMSToDegrees", "1 2 3 4", 1 + 2 / 60.0 + 3 / 3600.0},
        {"DMSToDegrees", "somewhere", 0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(util_.call(c.member, {c.text}).toDouble(), c.value, 1e-12) << c.member << " " << c.text;
}

TEST_F(UtilTest, WhatIsNoAngleIsRefused) {
    const Value nan(std::numeric_limits<double>::quiet_NaN());
    const std::vector<std::pair<const char*, Arguments>> uses = {
        {"HoursToHMS", {nan}},
        {"HoursToHMS", {1.000001e6}},
        {"HoursToHMS", {}},
        {"DegreesToDMS", {1.0, ":", ":", "", 10}},
        {"DegreesToDMS", {1.0, ":", ":", "", -1}},
        {"DMSToDegrees", {std::string(400, '9')}},
        {"WaitForMilliseconds", {-1}},
        {"WaitForMilliseconds", {86'400'001}},
    };
    for (const auto& [member, arguments] : uses)
        EXPECT_THROW(util_.call(member, arguments), platform::AutomationError) << member;
}

TEST_F(UtilTest, WaitsInProgramTime) {
    bool ran = false;
    const auto timer = loop_.after(platform::Milliseconds{1000}, [&] { ran = true; });
    util_.call("WaitForMilliseconds", {0});
    util_.call("WaitForMilliseconds", {3000});
    EXPECT_TRUE(ran);
    EXPECT_EQ(time_.sinceStart(), platform::Milliseconds{3000});
}

// ---- the chooser and the profile on a machine with a few drivers

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
    const auto devices = profile_.get("RegisteredDevices").toObject();
    ASSERT_EQ(devices->get("Count").toInt(), 2);
    EXPECT_EQ(devices->call("Item", {2}).toText(), "Two.Telescope");
    for (const int number : {0, 3})
        EXPECT_THROW(devices->call("Item", {number}), platform::AutomationError) << number;
}

}  // namespace
}  // namespace vantrel::helpers
