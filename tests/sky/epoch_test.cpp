#include "sky/epoch.h"

#include <string>

#include <gtest/gtest.h>

#include "sky/refraction.h"

namespace vantrel::sky {
namespace {

constexpr double kArcsecondInDegrees = 1.0 / 3600;

platform::Instant instant(const std::string& text) { return platform::parseInstant(text).value(); }

double hms(double h, double m, double s) { return 15 * (h + m / 60 + s / 3600); }
double dms(double d, double m, double s) { return d + m / 60 + s / 3600; }

TEST(SkyOfDate, ApparentPlaces) {
    // Theta Persei, catalogue place with proper motion to the date (example 21.b); the book uses the older
    // precession, 0.1" off by then.
    const SkyPosition meeus{hms(2, 46, 14.390), dms(49, 21, 7.45)};
    // The published places are CIO based; the equation of the origins, -0.002900618712657 rad, turns the
    // right ascension. Light deflection is in them, not in ours.
    const SkyPosition sofaIcrs{2.710126504531716819 / kDegree, 0.1740632537627034482 / kDegree};
    const SkyPosition sofa{(2.710121572969038991 + 0.002900618712657375647) / kDegree,
                           0.1729371367218230438 / kDegree};
    const struct {
        const char* source;
        const char* utc;
        SkyPosition icrs, apparent;
        double tolerance;  // arcseconds
    } cases[] = {
        {"Meeus, example 23.a", "2028-11-13T04:32:27", {41.054063, 49.227750}, meeus, 0.25},
        {"SOFA/ERFA validation of atic13", "2012-08-26T09:36:36.000", sofaIcrs, sofa, 0.0001},
    };
    for (const auto& c : cases) {
        const SkyOfDate sky(instant(c.utc));
        const SkyPosition got = sky.apparent(c.icrs);
        EXPECT_LT(separation(directionOf(got), directionOf(c.apparent)), c.tolerance * kArcsecondInDegrees)
            << c.source << ": " << got.ra << " " << got.dec;
        EXPECT_LT(separation(directionOf(sky.catalogue(c.apparent)), directionOf(c.icrs)),
                  c.tolerance * kArcsecondInDegrees)
            << c.source;
    }
}

TEST(SkyOfDate, SiderealTime) {
    const double kMean = dms(8, 34, 57.0896 - 0.2317);  // hours, less the equation of the equinoxes
    const struct {
        const char* source;
        const char* utc;
        double longitude;  // degrees east
        double hours;
        double tolerance;  // seconds of time, for UT1 - UTC and older conventions
    } cases[] = {
        {"Meeus, Astronomical Algorithms, example 12.a", "1987-04-10T00:00:00Z", 0, dms(13, 10, 46.1351),
         0.01},
        {"Meeus, example 12.b less nutation", "1987-04-10T19:21:00Z", 0, kMean, 0.02},
        {"the same, west of Greenwich", "1987-04-10T19:21:00Z", -77.065, kMean - 77.065 / 15, 0.02},
        {"the same, across 24 hours", "1987-04-10T19:21:00Z", -150, kMean + 14, 0.02},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(SkyOfDate(instant(c.utc)).siderealTime(c.longitude), c.hours, c.tolerance / 3600)
            << c.source;
}

TEST(Precession, MeanPlaces) {
    // Meeus, example 21.b: mean place of theta Persei for 2028 November 13.19; older precession, 0.1".
    const SkyPosition got = positionOf(precessionTo(2028.8678) * directionOf({41.054063, 49.227750}));
    const Vector3 expected = directionOf({hms(2, 46, 11.331), dms(49, 20, 54.54)});
    EXPECT_LT(separation(directionOf(got), expected) * 3600, 0.25) << got.ra << " " << got.dec;
}

// ---- refraction

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
