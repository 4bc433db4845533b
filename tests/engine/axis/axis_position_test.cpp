#include "engine/axis/axis_position.h"

#include <cmath>
#include <numbers>

#include <erfa.h>
#include <gtest/gtest.h>

#include "engine/axis/adjusters.h"
#include "engine/axis/air.h"
#include "engine/axis/axis_covariance.h"
#include "support/vectors.h"

namespace vantrel::engine {
namespace {

using test::kDegree;

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

// ---- adjusters

TEST(Adjusters, LookDifferentWhereTheyCanBeTold) {
    for (const double altitude : {20.0, 50.0, 80.0})
        for (const double azimuth : {0.0, 40.0, 160.0, 250.0}) {
            const AdjusterView view = adjustersAt({altitude, azimuth}, 2);
            const double a = altitude * kDegree;
            const double A = azimuth * kDegree;
            const double tilt = std::sqrt(1 - std::pow(std::cos(a) * std::sin(A), 2));
            EXPECT_NEAR(view.azimuthShift, std::cos(a), 1e-9);
            EXPECT_NEAR(view.altitudeShift, tilt, 1e-9);
            EXPECT_NEAR(view.separability, std::abs(std::cos(a) * std::cos(A)), 1e-9);
            EXPECT_NEAR(view.altitudeError, 2 / std::abs(std::cos(A)), 1e-6);
            EXPECT_NEAR(view.azimuthError, 2 * tilt / std::abs(std::cos(a) * std::cos(A)), 1e-6);
        }
}

TEST(Adjusters, AreBlindDueEastAndAtTheZenithButForTheRoll) {
    EXPECT_TRUE(std::isinf(adjustersAt({40, 270}, 1).azimuthError));
    EXPECT_TRUE(std::isinf(adjustersAt({40, 90}, 1).altitudeError));
    EXPECT_NEAR(adjustersAt({40, 270}, 1).separability, 0, 1e-9);
    EXPECT_TRUE(std::isinf(adjustersAt({90, 0}, 1).azimuthError));
    // At the zenith the field turns with the azimuth adjuster and moves with the other.
    EXPECT_NEAR(adjustersAt({90, 0}, 1, 15).azimuthError, 15, 1e-9);
    EXPECT_NEAR(adjustersAt({90, 0}, 1, 15).altitudeError, 1, 1e-9);
    EXPECT_LT(adjustersAt({40, 270}, 1, 15).azimuthError, 30);
}

// ---- air

constexpr double kArcsecond = 1 / 3600.0;

TEST(AirLift, AgreesWithErfaAboveFifteenDegrees) {
    const struct {
        double pressure, temperature;
        const char* why;
    } rows[] = {{1013.25, 15, "sea level"},
                {1010, 10, "a cool night in the lowlands"},
                {770, -5, "a mountain in winter"},
                {950, 28, "a summer night"}};
    for (const auto& row : rows) {
        double a = 0;
        double b = 0;
        eraRefco(row.pressure, row.temperature, 0, 0.55, &a, &b);
        const AirLift lift(Air{row.pressure, row.temperature});
        for (double observed = 15; observed < 90; observed += 5) {
            const double t = std::tan((90 - observed) * std::numbers::pi / 180);
            const double expected = (a * t + b * t * t * t) * 180 / std::numbers::pi;
            EXPECT_NEAR(lift.atTrueAltitude(observed - expected), expected, 0.3 * kArcsecond)
                << row.why << ", altitude " << observed;
        }
    }
}

TEST(AirLift, KeepsItsFormAtTheHorizonAndWithoutAir) {
    EXPECT_EQ(AirLift(kNoAir).atTrueAltitude(20), 0);
    EXPECT_NEAR(AirLift(Air{}).atTrueAltitude(90), 0, 1e-12);
    EXPECT_EQ(AirLift(Air{}).atTrueAltitude(-5), AirLift(Air{}).atTrueAltitude(1));
}

// U.S. Standard Atmosphere 1976, its own table.
TEST(Air, GetsThinnerWithHeight) {
    const struct {
        double height, pressure, temperature;
    } rows[] = {{0, 1013.25, 15}, {1000, 898.76, 8.5}, {2400, 757, -0.6}, {5000, 540.48, -17.5}};
    for (const auto& row : rows) {
        EXPECT_NEAR(standardAir(row.height).pressure, row.pressure, 1) << row.height;
        EXPECT_NEAR(standardAir(row.height).temperature, row.temperature, 0.1) << row.height;
    }
}

}  // namespace
}  // namespace vantrel::engine
