#include "imaging/view_raster.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace vantrel::imaging
