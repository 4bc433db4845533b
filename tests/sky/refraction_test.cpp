#include "sky/refraction.h"

#include <gtest/gtest.h>

namespace vantrel::sky {
namespace {

TEST(Refraction, LiftsAsTheAlmanacSays) {
    // The Nautical Almanac's altitude corrections of stars: 1010 hPa, 10 C, arc-minutes to 0.1'.
    struct Case {
        double altitude, arcminutes;
    };
    const Refraction air;
    for (const Case c : {Case{10, 5.3}, {15, 3.6}, {20, 2.6}, {30, 1.7}, {45, 1.0}, {60, 0.6}, {90, 0.0}})
        EXPECT_NEAR((c.altitude - air.trueAltitude(c.altitude)) * 60, c.arcminutes, 0.07) << c.altitude;
}

TEST(Refraction, ThinAirLiftsLess) {
    // SOFA/ERFA validation of refco: A = 0.2264949956e-3 rad, B = -0.2598658262e-6 rad for this air.
    const Refraction mountain({800, 10, 0.9, 0.4});
    EXPECT_NEAR((45 - mountain.trueAltitude(45)) * 3600, (0.2264949956e-3 - 0.2598658262e-6) * 206264.806,
                1e-4);
}

TEST(Refraction, BothWaysAgreeDownToBelowTheHorizon) {
    const Refraction air;
    for (int altitude = -20; altitude <= 90; ++altitude)
        EXPECT_NEAR(air.trueAltitude(air.observedAltitude(altitude)), altitude, 1e-8);
}

}  // namespace
}  // namespace vantrel::sky
