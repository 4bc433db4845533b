#include "engine/axis/axis_position.h"

#include <cmath>

#include <gtest/gtest.h>

#include "engine/axis/axis_covariance.h"

namespace vantrel::engine {
namespace {

TEST(AxisPosition, SignsAreThoseOfBothHemispheres) {
    // The written angle of an axis's northern end; its southern end lies on the other side of the sky.
    const struct {
        double latitude, angle;
        double azimuth, elevation;  // arc-minutes
        const char* why;
    } rows[] = {{50, 0, 0, 6, "above the north pole"},
                {50, 180, 0, -6, "below it"},
                {50, 90, 9.334, 0, "east of it: azimuth grows with 1 / cos(50)"},
                {50, 270, -9.334, 0, "west of it"},
                {-30, 180, 0, 6, "the southern end is above the south pole"},
                {-30, 0, 0, -6, "the southern end is below it"},
                {-30, 270, 6.928, 0, "the southern end is east: 6 / cos(30)"},
                {0, 90, 6, 0, "on the equator the northern end counts"}};
    for (const auto& row : rows) {
        const DirectionCosines axis = northernEnd({.ErrorAmplitude = 0.1, .ErrorAngle = row.angle});
        const Site site{row.latitude, kNoAir};
        const AxisOffset offset = offsetFromPole(axis, row.latitude, truePoleAltitude(site));
        EXPECT_NEAR(offset.azimuth, row.azimuth, 0.002) << row.why;
        EXPECT_NEAR(offset.elevation, row.elevation, 0.02) << row.why;
    }
}

TEST(AxisPosition, TheWrittenConventionComesBack) {
    for (const double amplitude : {0.001, 0.5, 5.0})
        for (const double angle : {0.0, 45.0, 135.0, 225.0, 359.0}) {
            const PolarError back =
                writtenError(northernEnd({.ErrorAmplitude = amplitude, .ErrorAngle = angle}));
            EXPECT_NEAR(back.ErrorAmplitude, amplitude, 1e-12);
            EXPECT_NEAR(back.ErrorAngle, angle, 1e-9);
        }
}

TEST(AxisPosition, TheRefractedPoleStandsHigher) {
    // 58.3" cot(latitude) - 0.067" cot(latitude)^3 for 10 degrees and 1013 hPa: Allen, Astrophysical
    // Quantities.
    const Air air{1013.25, 10};
    for (const double latitude : {45.0, -45.0, 20.0}) {
        const Site site{latitude, air};
        const double lift = 3600 * (refractedPoleAltitude(site) - truePoleAltitude(site));
        EXPECT_NEAR(lift, latitude == 20 ? 158.8 : 58.2, 0.8) << latitude;
    }
}

TEST(AxisCovariance, EllipsesAndSigmas) {
    // Sides 5 and 3, the long one 30 degrees from up through east.
    const double c = 0.75 * 25 + 0.25 * 9;
    const double e = 0.25 * 25 + 0.75 * 9;
    const double mixed = 0.4330127 * (25 - 9);
    const AxisCovariance covariance{e, mixed, c};
    EXPECT_NEAR(covariance.ellipse().major, 5, 1e-6);
    EXPECT_NEAR(covariance.ellipse().minor, 3, 1e-6);
    EXPECT_NEAR(covariance.ellipse().direction, 30, 1e-5);
    EXPECT_NEAR(covariance.sigma(), 4.123, 1e-3);
    EXPECT_NEAR(covariance.chiSquareOf(5 * 0.5, 5 * 0.8660254), 1, 1e-6) << "along the long side";
    EXPECT_NEAR(covariance.chiSquareOf(-6 * 0.8660254, 6 * 0.5), 4, 1e-5) << "across";
    EXPECT_TRUE(std::isinf(AxisCovariance{}.chiSquareOf(1, 0)));
}

}  // namespace
}  // namespace vantrel::engine
