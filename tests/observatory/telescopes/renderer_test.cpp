#include "observatory/telescopes/renderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <set>

#include <gtest/gtest.h>

#include "observatory/telescopes/noise.h"

namespace vantrel::observatory {
namespace {

SensorExposure darkFrame(std::size_t width, std::size_t height) {
    SensorExposure exposure;
    exposure.width = width;
    exposure.height = height;
    exposure.readNoise = 0;
    exposure.bias = 0;
    return exposure;
}

struct Moments {
    double sum = 0, x = 0, y = 0;  // sum and centroid
};

Moments moments(const std::vector<std::uint16_t>& counts, std::size_t width) {
    Moments m;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::size_t row = i / width;
        m.sum += counts[i];
        m.x += counts[i] * static_cast<double>(i - row * width);
        m.y += counts[i] * static_cast<double>(row);
    }
    m.x /= m.sum;
    m.y /= m.sum;
    return m;
}

TEST(Renderer, StarsKeepTheirPlaceAndTheirLight) {
    NoiseSource noise(1);
    for (const double sigma : {0.6, 1.5, 4.0})  // a narrower star's centroid leans to its pixel's middle
        for (const double offset : {0.0, 0.25, 0.5, 0.8}) {
            SensorExposure exposure = darkFrame(64, 48);
            exposure.sigma = sigma;
            const StarSpot star{30 + offset, 20 - offset, 50'000};
            const Moments got = moments(drawFrame(exposure, {star}, noise), 64);
            EXPECT_NEAR(got.sum, star.electrons, 5 * std::sqrt(star.electrons)) << sigma << " " << offset;
            const double standardError = std::hypot(sigma, 0.4) / std::sqrt(star.electrons);
            EXPECT_NEAR(got.x, star.x, 5 * standardError) << sigma << " " << offset;
            EXPECT_NEAR(got.y, star.y, 5 * standardError) << sigma << " " << offset;
        }
}

TEST(Renderer, SeeingSpreadsTheLightAsAGaussian) {
    NoiseSource noise(1);
    SensorExposure exposure = darkFrame(65, 65);
    exposure.sigma = 2;
    const auto counts = drawFrame(exposure, {{32, 32, 1e6}}, noise);
    // Integrated over a pixel: (erf(0.5 / (2 sqrt 2)))^2 of the light in the middle.
    EXPECT_NEAR(counts[32 * 65 + 32], 1e6 * std::pow(std::erf(0.25 / std::sqrt(2.0)), 2), 5 * 200);
    // Half the height at 1.17741 sigma, up to the pixel's width: compare a pixel 2 sigma off, exp(-2).
    EXPECT_NEAR(counts[32 * 65 + 36] / static_cast<double>(counts[32 * 65 + 32]), std::exp(-2), 0.006);
}

TEST(Renderer, NoiseIsShotAndReadNoise) {
    NoiseSource noise(3);
    NoiseSource same(3);
    SensorExposure exposure = darkFrame(500, 400);
    exposure.sky = 900;
    exposure.readNoise = 40;
    exposure.gain = 2;
    exposure.bias = 100;
    const auto counts = drawFrame(exposure, {}, noise);
    EXPECT_EQ(counts, drawFrame(exposure, {}, same));
    EXPECT_NE(counts, drawFrame(exposure, {}, same)) << "the next frame has its own noise";
    const double n = static_cast<double>(counts.size());
    double sum = 0;
    for (const double c : counts) sum += c;
    const double mean = sum / n;
    double variance = 0;
    double neighbours = 0;
    for (std::size_t i = 0; i + 1 < counts.size(); ++i) {
        variance += std::pow(counts[i] - mean, 2) / n;
        neighbours += (counts[i] - mean) * (counts[i + 1] - mean) / n;
    }
    const double expected = (900 + 40 * 40) / 4.0 + 1 / 12.0;  // in counts; the last for whole counts
    EXPECT_NEAR(mean, 100 + 900 / 2.0, 5 * std::sqrt(expected / n));
    EXPECT_NEAR(variance, expected, 5 * expected * std::sqrt(2 / n));
    EXPECT_NEAR(neighbours, 0, 5 * expected / std::sqrt(n));
}

TEST(Renderer, BrightStarsSaturateAndTheEdgeCuts) {
    NoiseSource noise(1);
    const SensorExposure exposure = darkFrame(32, 32);
    const auto counts =
        drawFrame(exposure, {{16, 16, 1e9}, {-0.5, 31.5, 40'000}, {-500, 16, 1e6}, {16, 1e9, 1e6}}, noise);
    EXPECT_EQ(counts[16 * 32 + 16], 65535);
    EXPECT_NEAR(counts[31 * 32], 40'000 * std::pow(std::erf(1 / std::sqrt(2.0)) / 2, 2), 500);
    EXPECT_EQ(counts[0], 0);
}

TEST(Renderer, HotPixelsStayWhereTheyAre) {
    SensorExposure exposure = darkFrame(100, 100);
    exposure.hotPixels = 50;
    NoiseSource noise(5);
    NoiseSource other(6);
    const auto hot = [&exposure](NoiseSource& source) {
        std::set<std::size_t> places;
        const auto counts = drawFrame(exposure, {}, source);
        for (std::size_t i = 0; i < counts.size(); ++i)
            if (counts[i] > 1000) places.insert(i);
        return places;
    };
    const auto places = hot(noise);
    EXPECT_GE(places.size(), 48U);  // two may coincide
    EXPECT_EQ(hot(noise), places) << "another frame of the same sensor";
    EXPECT_NE(hot(other), places) << "another sensor";
}

TEST(Renderer, BinsAndWindowsReadThePixelsTheyCover) {
    SensorExposure exposure;
    exposure.width = 31;
    exposure.height = 20;
    exposure.sky = 50;
    exposure.readNoise = 0;
    NoiseSource noise(1);
    const auto at = [&](const ReadWindow& window, std::size_t x, std::size_t y) {
        exposure.window = window;
        const auto counts = drawFrame(exposure, {{16, 13, 1e4}}, noise);
        EXPECT_EQ(counts.size(), window.width * window.height);
        return counts[y * window.width + x] - 100.0;
    };
    // The star's centre pixel lies in the third bin of four columns' width and the fifth of three rows'.
    EXPECT_NEAR(at({4, 3, 0, 0, 7, 6}, 0, 0), 12 * 50, 5 * std::sqrt(600));
    EXPECT_GT(at({4, 3, 0, 0, 7, 6}, 4, 4), 5000);
    EXPECT_GT(at({4, 3, 3, 2, 2, 3}, 1, 2), 5000);
    EXPECT_NEAR(at({4, 3, 3, 2, 2, 3}, 1, 0), 600, 5 * std::sqrt(600));
}

// ---- noise

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
