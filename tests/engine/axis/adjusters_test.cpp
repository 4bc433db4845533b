#include "engine/axis/adjusters.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "support/vectors.h"

namespace vantrel::engine {
namespace {

using test::kDegree;

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

}  // namespace
}  // namespace vantrel::engine
