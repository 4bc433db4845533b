#include "imaging/tone_curve.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "imaging/display_stretch.h"
#include "imaging/histogram.h"
#include "support/no_numbers.h"

namespace vantrel::imaging {
namespace {

using platform::ImageArray;
using test::kInfinity;
using test::kNaN;

TEST(ToneCurve, RunsFromBlackToWhiteThroughItsMidtone) {
    const ToneCurve curve(1000, 3000, 0.1);
    const struct {
        float value;
        int tone;
    } rows[] = {{-5, 0},
                {1000, 0},
                {1200, 127},
                {2999.9F, 253},
                {3000, 254},
                {65535, 254},
                {kInfinity, 255},
                {-kInfinity, 0},
                {kNaN, 0},
                {2147483000.0F, 255},
                {2147483648.0F, 255},
                {2.1e9F, 254}};
    for (const auto& row : rows)
        EXPECT_NEAR(curve.at(row.value), row.tone, row.tone == 127 ? 1 : 0) << row.value;
    int last = 0;
    for (int value = 1000; value <= 3000; ++value) {
        EXPECT_GE(curve.at(static_cast<float>(value)), last);
        last = curve.at(static_cast<float>(value));
    }
}

TEST(ToneCurve, TheTransferFunctionTakesItsThreePoints) {
    // Values of the published formula, worked out by hand.
    EXPECT_DOUBLE_EQ(midtonesTransfer(0.25, 0.25), 0.5);
    EXPECT_DOUBLE_EQ(midtonesTransfer(0.5, 0.25), 0.75);
    EXPECT_DOUBLE_EQ(midtonesTransfer(0.3, 0.5), 0.3);
    EXPECT_DOUBLE_EQ(midtonesTransfer(-1, 0.2), 0);
    EXPECT_DOUBLE_EQ(midtonesTransfer(2, 0.2), 1);
    EXPECT_NEAR(midtonesTransfer(midtonesTransfer(0.37, 0.8), 1 - 0.8), 0.37, 1e-12);
}

TEST(ToneCurve, TheAutomaticMidtoneShowsTheSkyDark) {
    PixelStatistics statistics;
    statistics.median = 1200;
    for (const double white : {1300.0, 5000.0, 65535.0, 2147483000.0})
        EXPECT_NEAR(
            midtonesTransfer((1200 - 1000) / (white - 1000), automaticMidtone(statistics, 1000, white)), 0.2,
            1e-6);
}

TEST(PixelStatistics, FindTheSkyUnderStarsMarksAndWhatIsNoNumber) {
    constexpr double kSky = 400, kNoise = 20;
    std::mt19937 random(7);
    std::normal_distribution<float> noise(kSky, kNoise);
    for (const auto& [width, height] : {std::pair{90, 90}, {1392, 1040}, {2600, 1800}}) {
        const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        std::vector<float> pixels(count);
        for (std::size_t i = 0; i < count; ++i) {
            pixels[i] = noise(random);
            if (i % 50 == 0) pixels[i] = 30'000;  // stars
            if (i % 53 == 0) pixels[i] = kNaN;
            if (i % 59 == 0) pixels[i] = kInfinity;
            if (i % 7 == 0) pixels[i] = 2147483000.0F;  // many lines
        }
        const ImageArray image(static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                               std::move(pixels));
        const PixelStatistics found = statisticsOf(image);
        EXPECT_NEAR(found.median, kSky, 2) << width;
        EXPECT_NEAR(found.deviation, kNoise, 2) << width;
        EXPECT_LE(found.highest, 30'000);
        EXPECT_LT(found.sample.size(), 60'000U) << "whatever the size";
        EXPECT_GT(found.sample.size(), 5'000U);
    }
    const PixelStatistics none = statisticsOf(ImageArray(2, 1, std::vector<float>{kNaN, 2147483000.0F}));
    EXPECT_TRUE(none.sample.empty());
    EXPECT_EQ(none.median, 0);
}

TEST(PixelStatistics, EveryColourOfAMosaicIsSampled) {
    std::vector<std::uint16_t> pixels(1000 * 1000);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint16_t>(1 + i % 2 + 2 * (i / 1000 % 2));
    const PixelStatistics found = statisticsOf(ImageArray(1000, 1000, std::move(pixels)));
    for (const float color : {1.0F, 2.0F, 3.0F, 4.0F})
        EXPECT_NEAR(static_cast<double>(std::count(found.sample.begin(), found.sample.end(), color)),
                    static_cast<double>(found.sample.size()) / 4,
                    0.02 * static_cast<double>(found.sample.size()));
}

TEST(AutomaticStretch, StandsForEveryKindOfPixels) {
    const struct {
        const char* what;
        float sky, noise, scale;
        int marked;  // one pixel in so many; 0: none
    } rows[] = {
        {"counts", 1000, 20, 1, 0},
        {"a relative scale", 1000, 20, 1.0F / 65536, 0},
        {"crossed by broad lines", 1000, 20, 1, 20},
        {"no noise", 1000, 0, 1, 0},
        {"no noise on a relative scale", 1000, 0, 1.0F / 65536, 0},
        {"below zero", -300, 20, 1, 0},
        {"nothing", 0, 0, 1, 0},
    };
    std::mt19937 random(3);
    std::normal_distribution<float> normal;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::vector<float> pixels(200 * 200);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            pixels[i] = row.scale * (row.sky + row.noise * normal(random));
            if (row.marked > 0 && i % static_cast<std::size_t>(row.marked) == 0) pixels[i] = 2147483000.0F;
        }
        const PixelStatistics statistics = statisticsOf(ImageArray(200, 200, std::move(pixels)));
        const Stretch stretch = automaticStretch(statistics);
        EXPECT_LT(stretch.min, row.sky * row.scale);
        EXPECT_GT(stretch.max, (row.sky + 3 * row.noise) * row.scale);
        EXPECT_LT(stretch.max - stretch.min, 20 * row.scale * std::max(row.noise, 1.0F));
        const ToneCurve curve(stretch.min, stretch.max,
                              automaticMidtone(statistics, stretch.min, stretch.max));
        EXPECT_NEAR(curve.at(static_cast<float>(statistics.median)), 0.2 * ToneCurve::kWhite, 8);
    }
}

TEST(Histogram, ItsAxisShowsTheNoiseAndTheBrightestStarAndLeadsBack) {
    PixelStatistics statistics;
    statistics.median = 500;
    statistics.deviation = 10;
    statistics.lowest = 450;
    statistics.highest = 65535;
    const HistogramAxis axis(statistics);
    EXPECT_GT(axis.place(520) - axis.place(480), 0.05) << "the noise is wide enough to be seen";
    EXPECT_LT(axis.place(65535), 1);
    for (const double value : {450.0, 500.0, 512.0, 3000.0, 65535.0})
        EXPECT_NEAR(axis.value(axis.place(value)), value, 1e-6 * value);
}

// Each whole count stands for the values up to the next, so that no bin between them is left out.
TEST(Histogram, WholeCountsLeaveNoGaps) {
    std::vector<std::uint16_t> pixels(64 * 64);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint16_t>(1000 + i % 8);
    const PixelStatistics statistics = statisticsOf(ImageArray(64, 64, std::move(pixels)));
    const HistogramAxis axis(statistics);
    const auto bins = histogramOf(statistics, axis, 500);
    const auto first = static_cast<std::size_t>(500 * axis.place(1000));
    const auto last = static_cast<std::size_t>(500 * axis.place(1007));
    for (std::size_t bin = 0; bin < bins.size(); ++bin)
        EXPECT_EQ(bins[bin] > 0, bin >= first && bin <= last) << bin;
}

TEST(Histogram, StandsForImagesWithoutAnyNoise) {
    for (const float value : {0.0F, 1000.0F, -3.0F, 0.25F}) {
        const PixelStatistics statistics = statisticsOf(ImageArray(20, 20, std::vector<float>(400, value)));
        const HistogramAxis axis(statistics);
        const auto bins = histogramOf(statistics, axis, 64);
        EXPECT_EQ(*std::max_element(bins.begin(), bins.end()), 1);
        EXPECT_EQ(std::accumulate(bins.begin(), bins.end(), 0.0), 1) << "one bin holds all";
    }
    const auto none = histogramOf({}, HistogramAxis({}), 8);
    EXPECT_EQ(std::accumulate(none.begin(), none.end(), 0.0), 0);
}

}  // namespace
}  // namespace vantrel::imaging
