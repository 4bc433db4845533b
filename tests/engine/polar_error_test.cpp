#include "engine/polar_error.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "support/vectors.h"

namespace vantrel::engine {
namespace {

using test::turned;
using test::Vector;

constexpr double kDegree = std::numbers::pi / 180;

// Directions: x to hour angle 0 on the equator, y to hour angle 6 h (west), z to the pole.
Vector unitVector(double haHours, double decDegrees) {
    const double h = haHours * 15 * kDegree;
    const double d = decDegrees * kDegree;
    return {std::cos(h) * std::cos(d), std::sin(h) * std::cos(d), std::sin(d)};
}

/// A mount whose axis is turned away from the pole, in a plain geometry that shares nothing with the solver:
/// `direction` is where the axis lies as seen from the pole, counter-clockwise from up (the meridian).
struct Mount {
    double amplitude = 0, direction = 0;  // degrees
    double offsetHA = 0, offsetDec = 0;   // what it reads too much, hours and degrees

    PlatePosition plate(double scopeHA, double scopeDec) const {
        // Up is towards hour angle 0, east towards 18 h; the rotation's axis is square to both pole and
        // target.
        const Vector target = unitVector(-direction / 15, 0);
        const Vector axis = {-target.y, target.x, 0};
        const Vector seen =
            turned(unitVector(scopeHA - offsetHA, scopeDec - offsetDec), axis, amplitude * kDegree);
        double ha = std::atan2(seen.y, seen.x) / kDegree / 15;
        if (ha < 0) ha += 24;
        return {ha, std::asin(seen.z) / kDegree, std::fmod(scopeHA + 24, 24)};
    }

    PolarErrorResult measured(double scopeDec, std::array<double, 3> scopeHAs) const {
        return CalcPolarError(
            {plate(scopeHAs[0], scopeDec), plate(scopeHAs[1], scopeDec), plate(scopeHAs[2], scopeDec)},
            scopeDec);
    }
};

TEST(PolarError, FindsTheAxisInEveryDirection) {
    for (const double direction : {0.001, 45.0, 90.0, 179.99, 270.0, 300.0})
        for (const double amplitude : {0.02, 0.5, 3.0})
            for (const double dec : {40.0, 5.0, -40.0}) {
                const auto result = Mount{amplitude, direction}.measured(dec, {1, 0, 23});
                ASSERT_FALSE(result.BadSolution);
                EXPECT_NEAR(result.error.ErrorAmplitude, amplitude, 1e-6) << direction << " at " << dec;
                EXPECT_NEAR(std::remainder(result.error.ErrorAngle - direction, 360), 0, 1e-3)
                    << amplitude << " at " << dec;
                EXPECT_NEAR(result.error.OffsetRA, 0, 5e-3);
            }
}

TEST(PolarError, FindsTheMountsOwnOffsets) {
    const auto result = Mount{0, 0, 0.1, 0.2}.measured(40, {1, 0, 23});
    EXPECT_NEAR(result.error.OffsetRA, 0.1, 1e-9);
    EXPECT_NEAR(result.error.OffsetDec, 0.2, 1e-6);
    EXPECT_NEAR(result.error.ErrorAmplitude, 0, 1e-6);

    const auto southern = Mount{0.5, 200, -0.3, -0.4}.measured(-35, {2, 1, 0});
    EXPECT_NEAR(southern.error.OffsetRA, -0.3, 5e-3);
    EXPECT_NEAR(southern.error.OffsetDec, -0.4, 5e-3);
    EXPECT_NEAR(southern.error.ErrorAmplitude, 0.5, 1e-6);
}

TEST(PolarError, AnAlignedMountHasNoError) {
    const auto result = Mount{}.measured(30, {3, 2, 1});
    EXPECT_FALSE(result.BadSolution);
    EXPECT_NEAR(result.error.ErrorAmplitude, 0, 1e-6);
    EXPECT_NEAR(result.error.OffsetRA, 0, 1e-9);
    EXPECT_NEAR(result.error.OffsetDec, 0, 1e-5);
}

TEST(PolarError, AnImpossibleFitIsABadSolutionThatKeepsTheHourAngleOffset) {
    const auto result = CalcPolarError({{{1.0, 40, 0.9}, {0.99, 55, 0.89}, {0.98, 30, 0.88}}}, 40);
    EXPECT_TRUE(result.BadSolution);
    EXPECT_EQ(result.error.ErrorAmplitude, 0);
    EXPECT_EQ(result.error.ErrorAngle, 0);
    EXPECT_EQ(result.error.OffsetDec, 0);
    EXPECT_NE(result.error.OffsetRA, 0);
}

TEST(PolarError, ThreeIdenticalPlatesLookLikeAnAlignedMount) {
    const auto result = CalcPolarError({{{0, 40, 0}, {0, 40, 0}, {0, 40, 0}}}, 41);
    EXPECT_FALSE(result.BadSolution);
    EXPECT_EQ(result.error.OffsetRA, 0);
    EXPECT_EQ(result.error.OffsetDec, 41);
    EXPECT_EQ(result.error.ErrorAmplitude, 0);
    EXPECT_EQ(result.error.ErrorAngle, 0);
}

}  // namespace
}  // namespace vantrel::engine
