#include "platform/site_angle.h"

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

constexpr auto kLat = SiteAxis::kLatitude;
constexpr auto kLon = SiteAxis::kLongitude;

TEST(SiteAngle, ReadsWhatOperatorsWrite) {
    constexpr double kExact = 48.0 + 30.0 / 60 + 15.5 / 3600;
    const struct {
        SiteAxis axis;
        const char* text;
        double degrees;
        const char* unlettered;
    } rows[] = {
        {kLat, "48.5", 48.5, "48.5"},
        {kLat, "-48,5", -48.5, "-48,5"},
        {kLat, " +48.5 ", 48.5, "+48.5"},
        {kLat, "\u221248.5", -48.5, "-48.5"},
        {kLat, ".5", 0.5, ".5"},
        {kLat, "0", 0, "0"},
        {kLat, "90", 90, "90"},
        {kLat, "48 30", 48.5, "48 30"},
        {kLat, "48d 30m 15.5s", kExact, "48d 30m 15.5s"},
        {kLat, "48D30M15.5S", kExact, "48D30M15.5S"},
        {kLat, "48\u00B0 30' 15.5\"", kExact, "48\u00B0 30' 15.5\""},
        {kLat, "48:30:15.5", kExact, "48:30:15.5"},
        {kLat, "48-30-15.5", kExact, "48-30-15.5"},
        {kLat, "48 deg 30 min 15.5 sec", kExact, "48 deg 30 min 15.5 sec"},
        {kLat, "-00d 30m", -0.5, "-00d 30m"},
        {kLat, "48.5 S", -48.5, "48.5"},
        {kLat, "48.5s", -48.5, "48.5"},
        {kLat, "S48.5", -48.5, "48.5"},
        {kLat, "n 48 30", 48.5, "48 30"},
        {kLat, "+48.5 N", 48.5, "+48.5"},
        {kLat, "48 30 15.5s", kExact, "48 30 15.5s"},
        {kLat, "48 30 15.5S", -kExact, "48 30 15.5"},
        {kLat, "48d 30m 15.5s S", -kExact, "48d 30m 15.5s"},
        {kLat, "48\u00B030'15.5\"S", -kExact, "48\u00B030'15.5\""},
        {kLon, "11 15 W", -11.25, "11 15"},
        {kLon, "E 11.25", 11.25, "11.25"},
        {kLon, "151d 30m 00.0s", 151.5, "151d 30m 00.0s"},
        {kLon, "-360", -360, "-360"},
    };
    for (const auto& row : rows) {
        const auto angle = readSiteAngle(row.text, row.axis);
        ASSERT_TRUE(angle) << row.text;
        EXPECT_DOUBLE_EQ(angle->degrees, row.degrees) << row.text;
        EXPECT_EQ(angle->unlettered, row.unlettered) << row.text;
        EXPECT_EQ(angle->opposite, angle->degrees < 0 && angle->unlettered.front() != '-') << row.text;
    }
}

TEST(SiteAngle, RefusesEverythingElse) {
    for (const char* text : {"",       " ",      "north",   "S",       "-",       "48.5 X",   "48.5 E",
                             "48.5 W", "x48.5",  "48.5.5",  "48.5 30", "48 60",   "48 30 60", "48 30 15 10",
                             "90.1",   "90 0 1", "-91",     "-48.5 S", "-48.5 N", "+48.5 S",  "--48",
                             "S 48 S", "4e1",    "48d 30d", "30' 48d", "inf",     "1e400",    "48.5\u00B0C"})
        EXPECT_FALSE(readSiteAngle(text, kLat)) << text;
    for (const char* text : {"11.5 N", "11.5 S", "360.1", "E 11 W"})
        EXPECT_FALSE(readSiteAngle(text, kLon)) << text;
}

}  // namespace
}  // namespace vantrel::platform
