#include "observatory/telescopes/noise.h"

#include <array>
#include <cmath>
#include <cstdint>

#include <gtest/gtest.h>

namespace vantrel::observatory {
namespace {

TEST(NoiseSource, DrawsTheNormalDistribution) {
    NoiseSource noise(7);
    constexpr int kDraws = 1'000'000;
    double sums[5] = {};
    int beyond2 = 0;
    int beyond3 = 0;
    for (int i = 0; i < kDraws; ++i) {
        const double x = noise.gaussian();
        for (int power = 1; power < 5; ++power) sums[power] += std::pow(x, power);
        beyond2 += std::abs(x) > 2 ? 1 : 0;
        beyond3 += std::abs(x) > 3 ? 1 : 0;
    }
    // Five standard errors each.
    EXPECT_NEAR(sums[1] / kDraws, 0, 0.005);
    EXPECT_NEAR(sums[2] / kDraws, 1, 0.007);
    EXPECT_NEAR(sums[3] / kDraws, 0, 0.02);
    EXPECT_NEAR(sums[4] / kDraws, 3, 0.05);
    EXPECT_NEAR(beyond2, 0.0455003 * kDraws, 5 * std::sqrt(0.0455003 * kDraws));
    EXPECT_NEAR(beyond3, 0.0026998 * kDraws, 5 * std::sqrt(0.0026998 * kDraws));
}

TEST(NoiseSource, UniformFillsTheInterval) {
    NoiseSource noise(7);
    int counts[10] = {};
    for (int i = 0; i < 100'000; ++i) ++counts[static_cast<int>(noise.uniform() * 10)];
    for (const int count : counts) EXPECT_NEAR(count, 10'000, 500);
}

TEST(NoiseSource, SeedsSettleEverything) {
    const auto drawn = [](NoiseSource noise) {
        std::array<std::uint64_t, 100> bits{};
        for (auto& number : bits) number = noise.bits();
        return bits;
    };
    EXPECT_EQ(drawn(NoiseSource(42)), drawn(NoiseSource(42)));
    EXPECT_NE(drawn(NoiseSource(42)), drawn(NoiseSource(43)));
}

}  // namespace
}  // namespace vantrel::observatory
