#include "engine/axis/comparison.h"

#include <random>

#include <gtest/gtest.h>

#include "engine/axis/least_squares.h"
#include "simulated_mount.h"

namespace vantrel::engine {
namespace {

using test::arc;
using test::SimulatedMount;

AxisEstimate estimateOf(const SimulatedMount& mount, double middle, std::mt19937& random) {
    const auto plates = test::blurred(mount.plates(arc(middle, 20, 3)), {}, random);
    return LeastSquares({.centreFloor = 0, .rollFloor = 0}).estimate(plates, mount.site);
}

TEST(Comparison, TellsAnotherAxisFromErrors) {
    SimulatedMount mount{.site = {-40, standardAir(0)}, .azimuth = 10, .elevation = 7};
    mount.site.air.uncertainty = 0;
    mount.declination = -20;
    SimulatedMount moved = mount;
    moved.azimuth += 1.5;  // arc-minutes: 69" on the sky
    std::mt19937 random(2);
    int same = 0;
    int different = 0;
    for (int trial = 0; trial < 200; ++trial) {
        const AxisEstimate first = estimateOf(mount, 1, random);
        const auto again = differenceOf(first, estimateOf(mount, -2, random), mount.site);
        const auto other = differenceOf(first, estimateOf(moved, -2, random), mount.site);
        ASSERT_TRUE(again && other);
        same += again->differs;
        different += other->differs;
        EXPECT_NEAR(other->east, 69, 60);
    }
    EXPECT_LE(same, 3);
    EXPECT_GE(different, 190);
}

TEST(Comparison, NeedsTwoEstimates) {
    std::mt19937 random(2);
    const SimulatedMount mount;
    const AxisEstimate good = estimateOf(mount, 0, random);
    EXPECT_FALSE(differenceOf(good, AxisEstimate{}, mount.site));
    AxisEstimate blind = good;
    blind.covariance.reset();
    EXPECT_FALSE(differenceOf(blind, good, mount.site));
    EXPECT_EQ(differenceOf(good, good, mount.site)->distance, 0);
}

}  // namespace
}  // namespace vantrel::engine
