#include "imaging/view_raster.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "imaging/display_stretch.h"
#include "imaging/histogram.h"
#include "imaging/tone_curve.h"
#include "support/no_numbers.h"

namespace vantrel::imaging {
namespace {

using platform::ImageArray;
using test::kInfinity;
using test::kNaN;

/// A dark sky of alternating 99 and 101, and then what the caller adds.
template <typename Pixel>
ImageArray skyWith(std::size_t width, std::size_t height,
                   const std::function<void(std::vector<Pixel>&)>& add) {
    std::vector<Pixel> pixels(width * height);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = (i / width + i) % 2 == 0 ? 99 : 101;
    add(pixels);
    return {width, height, std::move(pixels)};
}

float at(const ViewRaster& raster, int x, int y) {
    return raster.values[static_cast<std::size_t>(y) * static_cast<std::size_t>(raster.width) +
                         static_cast<std::size_t>(x)];
}

ViewRaster fitted(const ImageArray& image, int width, int height) {
    ImageViewport viewport;
    viewport.setWindowSize(width, height);
    viewport.setImageSize(static_cast<int>(image.width()), static_cast<int>(image.height()));
    return rasterOf(image, viewport.window(), statisticsOf(image));
}

float brightest(const ViewRaster& raster, int x) {
    float most = -kInfinity;
    for (int y = 0; y < raster.height; ++y) most = std::max(most, at(raster, x, y));
    return most;
}

TEST(ViewRaster, KeepsEveryLineAndStarOfOnePixelHoweverFarItIsReduced) {
    constexpr std::size_t kWidth = 401, kHeight = 277;
    for (const int shown : {400, 285, 201, 133, 43, 14, 3}) {
        for (const std::size_t place : {std::size_t{0}, std::size_t{1}, kHeight / 2, kHeight - 1}) {
            const auto image = skyWith<std::int32_t>(kWidth, kHeight, [&](auto& pixels) {
                for (std::size_t x = 0; x < kWidth; ++x) pixels[place * kWidth + x] = 2147483000;
            });
            const ViewRaster raster = fitted(image, shown, shown);
            int marked = 0;
            for (int y = 0; y < raster.height; ++y) {
                int columns = 0;
                for (int x = 0; x < raster.width; ++x) columns += at(raster, x, y) > 2e9F ? 1 : 0;
                EXPECT_TRUE(columns == 0 || columns == raster.width) << "broken line";
                marked += columns > 0 ? 1 : 0;
            }
            EXPECT_EQ(marked, 1) << "line at row " << place << " in a view of " << shown;
        }
    }
}

TEST(ViewRaster, ShowsWhatWasSetAsMarksAndUncoversThePictureBeneath) {
    const auto bare = skyWith<std::uint16_t>(300, 200, [](auto& pixels) { pixels[80 * 300 + 120] = 60'000; });
    std::vector<std::size_t> cross;
    for (std::size_t x = 0; x < 300; ++x) cross.push_back(80 * 300 + x);
    for (std::size_t y = 0; y < 200; ++y) cross.push_back(y * 300 + 120);
    const auto marked = bare.withPixels(cross, 140);  // no brighter than the sky
    for (const double scale : {0.3, 0.5, 1.0, 2.0, 3.7}) {
        SCOPED_TRACE(scale);
        ImageViewport viewport;
        viewport.setImageSize(300, 200);
        viewport.setWindowSize(static_cast<int>(300 * scale), static_cast<int>(200 * scale));
        const ViewWindow window = viewport.window();
        const PixelStatistics statistics = statisticsOf(bare);
        const ViewRaster clean = rasterOf(bare, window, statistics);
        ViewRaster raster = rasterOf(marked, window, statistics);
        const ViewCircle circle{viewport.toWindow({120, 80}), 12};
        const int row = static_cast<int>(circle.centre.y);
        for (int x = 0; x < raster.width; ++x) EXPECT_EQ(at(raster, x, row), static_cast<float>(kMarkValue));

        uncover(raster, marked, window, statistics, circle);
        float brightestInside = 0;
        for (int x = 0; x < raster.width; ++x) {
            const bool inside = circle.contains(x + 0.5, row + 0.5);
            EXPECT_EQ(at(raster, x, row) == static_cast<float>(kMarkValue), !inside) << x;
            if (inside) brightestInside = std::max(brightestInside, at(raster, x, row));
        }
        EXPECT_EQ(brightestInside, 60'000) << "the star under the crossing";
        EXPECT_EQ(at(clean, 1, 1), at(raster, 1, 1));
    }
}

TEST(ViewRaster, ShowsTheMeanOfTheSkyAndThePeakOfAStar) {
    const auto image =
        skyWith<std::uint16_t>(800, 800, [](auto& pixels) { pixels[400 * 800 + 413] = 30'000; });
    for (const double scale : {0.5, 0.25, 0.1}) {
        const int side = static_cast<int>(800 * scale);
        const ViewRaster raster = fitted(image, side, side);
        const int star = static_cast<int>(413 * scale);
        EXPECT_EQ(brightest(raster, star), 30'000);
        EXPECT_NEAR(brightest(raster, star - 3), 100, 0.6) << "noise is averaged away";
    }
}

TEST(ViewRaster, ReducedMeansCountEveryPixelByItsShare) {
    std::vector<float> pixels;
    pixels.reserve(35);
    for (int i = 0; i < 35; ++i) pixels.push_back(static_cast<float>(i % 7));
    const ImageArray image(7, 5, pixels);
    PixelStatistics noisy;
    noisy.deviation = 100;
    // A view of 2.8 pixels a pixel, across and down.
    const ViewWindow window{.scale = 1 / 2.5, .width = 2, .height = 2};
    const ViewRaster raster = rasterOf(image, window, noisy);
    const float left = (0 + 1 + 2 * 0.5F) / 2.5F, right = (2 * 0.5F + 3 + 4) / 2.5F;
    EXPECT_FLOAT_EQ(raster.values[0], left);
    EXPECT_FLOAT_EQ(raster.values[1], right);
    EXPECT_FLOAT_EQ(raster.values[2], left);
}

TEST(ViewRaster, WhatIsNoNumberSpoilsNoNeighbour) {
    const auto image = skyWith<float>(300, 300, [](auto& pixels) {
        pixels[0] = kNaN;
        pixels[150 * 300 + 150] = kInfinity;
        pixels[200 * 300 + 40] = -kInfinity;
    });
    const ViewRaster raster = fitted(image, 100, 100);
    int infinite = 0;
    for (const float value : raster.values) {
        infinite += std::isinf(value) ? 1 : 0;
        EXPECT_TRUE(std::isinf(value) || std::abs(value - 100) <= 1) << value;
    }
    EXPECT_EQ(infinite, 1) << "endless light is shown where it is";
}

TEST(ViewRaster, WhereNoPixelHasAValueNoneIsShown) {
    const auto image = skyWith<float>(300, 300, [](auto& pixels) {
        for (std::size_t i = 0; i < pixels.size(); ++i)
            if (i % 300 >= 150) pixels[i] = kNaN;
    });
    for (const int side : {100, 300, 600}) {
        const ViewRaster raster = fitted(image, side, side);
        for (int x = 0; x < side; ++x) EXPECT_EQ(std::isnan(at(raster, x, 40)), x >= side / 2) << x;
    }
}

TEST(ViewRaster, EnlargedPixelsAreSquares) {
    const ImageArray image(3, 2, std::vector<std::uint16_t>{1, 2, 3, 4, 5, 6});
    const ViewRaster raster = fitted(image, 9, 6);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 9; ++x) {
            const int pixel = 1 + x / 3 + 3 * (y / 3);
            EXPECT_EQ(at(raster, x, y), static_cast<float>(pixel)) << x << " " << y;
        }
}

TEST(ViewRaster, EveryWindowOfEveryZoomLiesInsideTheImage) {
    const auto image = skyWith<std::uint16_t>(331, 207, [](auto&) {});
    const PixelStatistics statistics = statisticsOf(image);
    ImageViewport viewport;
    viewport.setImageSize(331, 207);
    for (const int side : {1, 2, 33, 207, 331, 500}) {
        viewport.setWindowSize(side, side);
        for (int step = 0; step < 25; ++step) viewport.zoomOut({0, 0});
        for (int step = 0; step < 25; ++step) {
            for (const double far : {-1e5, 1e5}) {
                viewport.pan(far, far);
                const ViewWindow window = viewport.window();
                EXPECT_LE(window.x + window.width, side);
                const ViewRaster raster = rasterOf(image, window, statistics);
                EXPECT_EQ(raster.values.size(), static_cast<std::size_t>(window.width * window.height));
                const auto [least, most] = std::minmax_element(raster.values.begin(), raster.values.end());
                EXPECT_TRUE(*least >= 99 && *most <= 101);
            }
            viewport.zoomIn({0, 0});
        }
        viewport.fit();
    }
}

// ---- tones and histogram

TEST(ToneCurve, RunsFromBlackToWhiteThroughItsMidtone) {
    const ToneCurve curve(1000, 3000, 0.1);
    const std::pair<float, int> rows[] = {
        {-5, 0},
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
        {2.1e9F, 254},
    };
    for (const auto& [value, tone] : rows) EXPECT_NEAR(curve.at(value), tone, tone == 127 ? 1 : 0) << value;
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
        {"more than floats tell apart", 1e8F, 0, 1, 0},
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
        const float least = std::max(1.0F, 1e-6F * row.sky);
        EXPECT_LT(stretch.max - stretch.min, 20 * row.scale * std::max(row.noise, least));
        EXPECT_GT(stretch.max - stretch.min, 1e-6 * row.sky * row.scale);
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
