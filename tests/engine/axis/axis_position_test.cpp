#include "engine/axis/axis_position.h"

#include <cmath>
#include <numbers>
#include <random>

#include <Eigen/Dense>
#include <erfa.h>
#include <gtest/gtest.h>

#include "engine/axis/adjusters.h"
#include "engine/axis/air.h"
#include "engine/axis/axis_covariance.h"
#include "engine/axis/chi_square.h"
#include "engine/axis/plate.h"
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
    EXPECT_NEAR((AxisCovariance{0.04, 0, 0.04}.chiSquareOf(0.2, 0)), 1, 1e-9) << "well known";
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

// ---- plates

TEST(PositionAngle, IsThatOfTheRowsWhateverTheHand) {
    // Rows that lie at this angle from north through east; columns square to them on either side.
    for (const double angle : {0.0, 30.0, 90.0, 170.0, -100.0})
        for (const double hand : {1.0, -1.0}) {
            const double east = std::sin(angle * kDegree);
            const double north = std::cos(angle * kDegree);
            const double h = 1e-3;
            const double v = 1.0004e-3 * hand;  // refraction makes the scales unequal
            EXPECT_NEAR(
                std::remainder(positionAngleOfRows(h * east, -v * north, h * north, v * east) - angle, 360),
                0, 1e-9)
                << hand;
        }
}

TEST(PositionAngle, AStretchTurnsNothing) {
    // A stretch by 4e-4 at 45 degrees to the rows: it would turn a single row by 41".
    const double s = 2e-4;
    EXPECT_NEAR(positionAngleOfRows(1 + s, s, s, 1 + s), 90, 1e-9);
}

/// Scatter of centre and roll when models of an order are fitted to stars with errors of 1".
struct Scatter {
    double centre = 0, roll = 0, meanResidual = 0;
};

Scatter scatterOfFits(int stars, int order, double width, double height) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-1, 1);
    std::normal_distribution<double> error(0, 1);
    const int trials = 300;
    Scatter scatter;
    for (int trial = 0; trial < trials; ++trial) {
        Eigen::MatrixXd terms(stars, (order + 1) * (order + 2) / 2);
        Eigen::MatrixXd errors(stars, 2);
        for (int star = 0; star < stars; ++star) {
            const double x = place(random) * width * 1800;
            const double y = place(random) * height * 1800;
            int column = 0;
            for (int degree = 0; degree <= order; ++degree)
                for (int j = 0; j <= degree; ++j)
                    terms(star, column++) = std::pow(x / 1000, degree - j) * std::pow(y / 1000, j);
            errors.row(star) << error(random), error(random);
        }
        const Eigen::MatrixXd model = terms.householderQr().solve(errors);
        const double roll = (model(1, 1) - model(2, 0)) / 2 / 1000 / kDegree * 3600;
        scatter.centre += (model(0, 0) * model(0, 0) + model(0, 1) * model(0, 1)) / 2 / trials;
        scatter.roll += roll * roll / trials;
        scatter.meanResidual += (errors - terms * model).rowwise().norm().mean() / trials;
    }
    scatter.centre = std::sqrt(scatter.centre);
    scatter.roll = std::sqrt(scatter.roll);
    return scatter;
}

TEST(PlateCovariance, FollowsFromWhatTheSolverSays) {
    for (const int order : {1, 2, 3}) {
        const Scatter scatter = scatterOfFits(150, order, 1.4, 1.0);
        const auto covariance = covarianceOf({150, scatter.meanResidual, order, 1.4, 1.0});
        ASSERT_TRUE(covariance);
        EXPECT_NEAR(std::sqrt(covariance->eastEast) / scatter.centre, 1, 0.1) << order;
        EXPECT_NEAR(std::sqrt(covariance->rollRoll) / scatter.roll, 1, 0.1) << order;
    }
}

TEST(PlateCovariance, FollowsFromTheSolversOwnErrors) {
    const auto covariance = covarianceOf(SolutionErrors{.centre = 0.05, .roll = 6});
    ASSERT_TRUE(covariance);
    EXPECT_DOUBLE_EQ(covariance->eastEast, 0.05 * 0.05);
    EXPECT_DOUBLE_EQ(covariance->northNorth, 0.05 * 0.05);
    EXPECT_DOUBLE_EQ(covariance->rollRoll, 36);
    for (const SolutionErrors& unusable : {SolutionErrors{0, 6}, {0.05, 0}, {std::nan(""), 6}, {0.05, -1}})
        EXPECT_FALSE(covarianceOf(unusable)) << unusable.centre << ' ' << unusable.roll;
}

TEST(PlateCovariance, NeedsStarsToSpareAndAField) {
    EXPECT_FALSE(covarianceOf({3, 0.5, 1, 1, 1}));
    EXPECT_FALSE(covarianceOf({30, 0.5, 1, 0, 1}));
    EXPECT_FALSE(covarianceOf({30, std::nan(""), 1, 1, 1}));
    EXPECT_TRUE(covarianceOf({4, 0.5, 1, 1, 1}));
}

// ---- chi-square

// Abramowitz and Stegun, table 26.8: values that are exceeded with a probability.
TEST(ChiSquare, AgreesWithTheTable) {
    const struct {
        double value;
        int freedom;
        double probability;
    } rows[] = {{3.84146, 1, 0.05}, {5.99146, 2, 0.05},  {7.81473, 3, 0.05},  {6.63490, 1, 0.01},
                {13.2767, 4, 0.01}, {23.2093, 10, 0.01}, {30.5779, 15, 0.01}, {13.8155, 2, 0.001}};
    for (const auto& row : rows) {
        EXPECT_NEAR(chiSquareTail(row.value, row.freedom) / row.probability, 1, 1e-4) << row.value;
        EXPECT_NEAR(chiSquareLimit(row.probability, row.freedom), row.value, 1e-3) << row.value;
    }
    // Far out: exp(-x/2) with two degrees of freedom, smaller by the root of πx/2 with one.
    EXPECT_NEAR(logChiSquareTail(5000, 2), -2500, 1e-9);
    EXPECT_NEAR(logChiSquareTail(5000, 1), -2500 - 0.5 * std::log(2500 * 3.14159265), 1e-3);
    EXPECT_EQ(chiSquareTail(5, 0), 1);
    EXPECT_EQ(chiSquareTail(0, 3), 1);
}

}  // namespace
}  // namespace vantrel::engine
