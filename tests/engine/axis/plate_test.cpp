#include "engine/axis/plate.h"

#include <cmath>
#include <numbers>
#include <random>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include "engine/axis/chi_square.h"
#include "support/vectors.h"

namespace vantrel::engine {
namespace {

using test::kDegree;

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
