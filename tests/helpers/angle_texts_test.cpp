#include "helpers/angle_texts.h"

#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "helpers/util_object.h"
#include "platform/queued_event_loop.h"

namespace vantrel::helpers {
namespace {

using platform::Arguments;
using platform::Value;

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
        {"HoursToHMS", {7.5}, "07:30:00"},
        {"HoursToHMS", {7.5, "h", "m", "s"}, "07h30m00s"},
        {"HoursToHMS", {12.582422, ":", ":", "", 3}, "12:34:56.719"},
        {"HoursToHMS", {-0.5}, "-00:30:00"},
        {"HoursToHMS", {100.0}, "100:00:00"},
        {"HoursToHMS", {"7.5"}, "07:30:00"},  // settings hold numbers as text
        // Carries: 59.99 s is not 60, and may run through to the units.
        {"HoursToHMS", {1 + 59 / 60.0 + 59.99 / 3600}, "02:00:00"},
        {"HoursToHMS", {1 + 29 / 60.0 + 59.6 / 3600}, "01:30:00"},
        {"HoursToHMS", {1 + 29 / 60.0 + 59.996 / 3600, ":", ":", "", 2}, "01:30:00.00"},
        {"HoursToHMS", {1 + 29 / 60.0 + 59.994 / 3600, ":", ":", "", 2}, "01:29:59.99"},
        {"HoursToHMS", {-59.4 / 3600}, "-00:00:59"},
        {"HoursToHMS", {-0.4 / 3600}, "00:00:00"},  // no minus sign before zeros
        {"DegreesToDMS", {-0.5}, "-00° 30' 00\""},
        {"DegreesToDMS", {-45.99999}, "-46° 00' 00\""},
        {"DegreesToDMS", {12.25, " ", " ", " "}, "12 15 00 "},
        {"DegreesToHMS", {112.5}, "07:30:00"},
        {"DegreesToHMS", {359.9999}, "24:00:00"},
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
        {"HMSToHours", "7h30m", 7.5},
        {"HMSToDegrees", "07 30 00", 112.5},
        {"DMSToDegrees", "-00° 30' 00\"", -0.5},
        {"DMSToDegrees", "- 0 30", -0.5},
        {"DMSToDegrees", "+48 08 12", 48 + 8 / 60.0 + 12 / 3600.0},
        {"DMSToDegrees", "48,5", 48.5},  // a decimal comma
        {"DMSToDegrees", "48.", 48},     // a full stop
        {"DMSToDegrees", ".5", 0.5},
        {"DMSToDegrees", "10 - 30", 10.5},  // only a sign before the first number counts
        {"DMSToDegrees", "1 2 3 4", 1 + 2 / 60.0 + 3 / 3600.0},
        {"DMSToDegrees", "", 0},
        {"DMSToDegrees", "somewhere", 0},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(util_.call(c.member, {c.text}).toDouble(), c.value, 1e-12) << c.member << " " << c.text;
}

TEST_F(UtilTest, WhatIsNoAngleIsRefused) {
    const Value nan(std::numeric_limits<double>::quiet_NaN());
    const std::vector<std::pair<const char*, Arguments>> uses = {
        {"HoursToHMS", {nan}},
        {"HoursToHMS", {1e300}},
        {"HoursToHMS", {"noon"}},
        {"HoursToHMS", {}},
        {"DegreesToDMS", {1.0, ":", ":", "", 10}},
        {"DegreesToDMS", {1.0, ":", ":", "", -1}},
        {"DMSToDegrees", {std::string(400, '9')}},
        {"WaitForMilliseconds", {-1}},
        {"WaitForMilliseconds", {nan}},
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

}  // namespace
}  // namespace vantrel::helpers
