#include "platform/sidereal.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

TEST(LocalMeanSiderealTime, AgreesWithPublishedValues) {
    struct Case {
        const char* source;
        const char* utc;
        double longitude;  // degrees, east positive
        double hours;
    };
    constexpr double kMinute = 1.0 / 60, kSecond = 1.0 / 3600;
    for (const Case& c : {
             Case{"Meeus, example 12.a", "1987-04-10T00:00:00Z", 0, 13 + 10 * kMinute + 46.3668 * kSecond},
             Case{"Meeus, example 12.b", "1987-04-10T19:21:00Z", 0, 8 + 34 * kMinute + 57.0896 * kSecond},
             Case{"the same, an hour further west: 7 h 34 m", "1987-04-10T19:21:00Z", -15,
                  7 + 34 * kMinute + 57.0896 * kSecond},
             Case{"the same, past 24 h", "1987-04-10T19:21:00Z", -135, 23 + 34 * kMinute + 57.0896 * kSecond},
         }) {
        const double got = localMeanSiderealTime(*parseInstant(c.utc), c.longitude * std::numbers::pi / 180);
        EXPECT_NEAR(got, c.hours, 0.0005 * kSecond) << c.source << " at " << c.utc;
    }
}

TEST(LocalMeanSiderealTime, HasNoValueWithoutALongitude) {
    const double nowhere = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(localMeanSiderealTime(*parseInstant("2026-11-24T20:00:00Z"), nowhere)));
}

}  // namespace
}  // namespace vantrel::platform
