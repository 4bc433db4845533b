#include "engine/axis/air.h"

#include <cmath>
#include <numbers>

#include <erfa.h>
#include <gtest/gtest.h>

namespace vantrel::engine {
namespace {

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
