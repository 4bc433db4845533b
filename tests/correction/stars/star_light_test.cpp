#include "correction/stars/star_light.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "correction/stars/coarse_image.h"
#include "correction/stars/defective_lines.h"
#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using test::FramePainter;
using test::FrameRecipe;

constexpr int kSide = 40;

struct Spot {
    int x, y;
    float height;
};

/// A sky of 1 with a noise far below that, and what stands out of it.
platform::ImageArray skyWith(const std::vector<Spot>& spots) {
    std::vector<float> pixels(kSide * kSide);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = 1 + 0.001F * static_cast<float>((i * 7 + i / kSide * 3) % 11);
    for (const Spot& spot : spots)
        pixels[static_cast<std::size_t>(spot.y) * kSide + static_cast<std::size_t>(spot.x)] += spot.height;
    return {kSide, kSide, std::move(pixels)};
}

TEST(StarLight, isWhatTheSecondBrightestNeighbourSupports) {
    const struct {
        const char* what;
        std::vector<Spot> spots;
        double light;  // of the first spot
    } rows[] = {
        {"nothing stands out", {}, 0},
        {"a hot pixel alone", {{20, 20, 900}}, 0},
        {"two side by side", {{20, 20, 900}, {21, 20, 900}}, 0},
        {"neighbours across a corner don't count", {{20, 20, 900}, {21, 21, 900}, {19, 19, 900}}, 0},
        {"a sharp star", {{20, 20, 90}, {21, 20, 40}, {20, 21, 30}}, 90},
        {"neighbours on the other sides", {{20, 20, 90}, {19, 20, 40}, {20, 19, 30}}, 90},
        {"above and below", {{20, 20, 90}, {20, 19, 40}, {20, 21, 30}}, 90},
        {"a hot pixel on a star's flank", {{20, 20, 900}, {21, 20, 40}, {20, 21, 30}}, 3.5 * 30},
        {"at the left edge", {{0, 20, 90}, {1, 20, 40}, {0, 21, 30}}, 90},
        {"at the right edge", {{39, 20, 90}, {38, 20, 40}, {39, 19, 30}}, 90},
        {"in the first corner", {{0, 0, 90}, {1, 0, 40}, {0, 1, 30}}, 90},
        {"in the last corner", {{39, 39, 90}, {38, 39, 40}, {39, 38, 30}}, 90},
        {"the row before ends far away", {{0, 20, 900}, {39, 19, 900}, {0, 21, 30}}, 0},
        {"the next row begins far away", {{39, 20, 900}, {0, 21, 900}, {39, 21, 30}}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto image = skyWith(row.spots);
        const SkyLevel sky(image, 20);
        const auto [x, y] = row.spots.empty() ? std::pair(20, 20) : std::pair(row.spots[0].x, row.spots[0].y);
        EXPECT_NEAR(starLight(image, sky, {0, 0, kSide, kSide}).at(x, y), row.light, 0.1);
        if (row.light == 0) {
            // The sums over squares are made another way.
            EXPECT_EQ(decimatedStarLight(image, sky, 2).at(x / 2, y / 2), 0);
        }
    }
}

// ---- defective lines

constexpr int kCell = 48;

platform::ImageArray mended(const platform::ImageArray& image) {
    return withoutDefectiveLines(image, SkyLevel(image, kCell));
}

FrameRecipe frame() {
    FrameRecipe recipe;
    recipe.width = 400;
    recipe.height = 300;
    recipe.gradientX = 300;
    return recipe;
}

TEST(DefectiveLines, areFilledInFromBesideThem) {
    FrameRecipe recipe = frame();
    recipe.defects = {
        {100, 0, 103, 300, 3000}, {399, 0, 400, 300, 500}, {0, 200, 400, 201, -600}, {250, 0, 251, 140, 200}};
    const auto image = mended(FramePainter(3).paint(recipe));
    const double noise = recipe.noise();
    for (const int x : {100, 101, 102, 250, 399})
        for (int y = 0; y < 300; ++y) {
            const double sky = recipe.sky + recipe.gradientX * (x / 400.0 - 0.5);
            ASSERT_NEAR(image.at(static_cast<std::size_t>(x), static_cast<std::size_t>(y)), sky, 5 * noise)
                << x << ", " << y;
        }
    for (int x = 0; x < 400; ++x) {
        const double sky = recipe.sky + recipe.gradientX * (x / 400.0 - 0.5);
        ASSERT_NEAR(image.at(static_cast<std::size_t>(x), 200), sky, 5 * noise) << x;
    }
}

/// Shared pixels, not equal ones: nothing was copied either.
TEST(DefectiveLines, areNotSeenWhereThereAreNone) {
    std::map<std::string, FrameRecipe> frames;
    const auto with = [&](const char* what) -> FrameRecipe& { return frames[what] = frame(); };
    with("stars").stars = {{200, 150, 8, 200'000}, {60, 60, 4, 20'000}};
    with("a star that trails along a column").trails = {{200, 120, 200, 170, 3, 20'000}};
    with("a star out of focus").discs = {{200, 150, 80, 20, 5000}};
    with("a nebula").nebula = {200, 150, 70, 3000};
    with("a mosaic of colours").mosaic = true;
    with("hot pixels").wrongPixels = 1e-3;
    FrameRecipe& still = with("a gradient without noise");
    still.gradientX = still.gradientY = 570;
    still.noiseFree = true;
    for (const auto& [what, recipe] : frames) {
        const platform::ImageArray image = FramePainter(3).paint(recipe);
        const platform::ImageArray same = mended(image);
        EXPECT_EQ(&same.pixels(), &image.pixels()) << what;
    }
}

/// A track that crosses the rows at a small angle is none of them, and what lies between its ends stays.
TEST(DefectiveLines, leaveWhatTracksCross) {
    FrameRecipe recipe = frame();
    recipe.trails = {{-2000, 0, 2400, 300, 4, 30'000}};
    recipe.stars = {{100.4, 170, 3, 9000}};
    const auto image = FramePainter(3).paint(recipe);
    EXPECT_NEAR(mended(image).at(100, 170), image.at(100, 170), 1);
}

/// Every line differs from those it is compared with.
TEST(DefectiveLines, surviveStripesEverywhere) {
    std::vector<std::uint16_t> pixels(120 * 90, 1000);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        if (i % 120 % 4 >= 2) pixels[i] = 3000;
    const platform::ImageArray image(120, 90, pixels);
    EXPECT_EQ(mended(image).width(), 120U);
    for (const std::size_t side : {1U, 8U, 20U, 40U, 71U})
        EXPECT_EQ(mended({side, side, std::vector<float>(side * side, 1)}).width(), side);
}

// ---- coarse images

/// 10 x 9: two columns and a row are left over.
template <typename Pixel>
std::vector<Pixel> slope() {
    std::vector<Pixel> pixels;
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 10; ++x) pixels.push_back(static_cast<Pixel>(100 + 16 * x + 160 * y));
    return pixels;
}

TEST(CoarseImage, HasTheMeansOfSquaresInEveryTypeOfPixels) {
    for (const platform::ImageArray& fine :
         {platform::ImageArray(10, 9, slope<std::uint16_t>()), platform::ImageArray(10, 9, slope<float>())}) {
        const platform::ImageArray coarse = coarseImage(fine);
        ASSERT_EQ(coarse.width(), 2U);
        ASSERT_EQ(coarse.height(), 2U);
        EXPECT_EQ(coarse.at(0, 0), 100 + 24 + 240);
        EXPECT_EQ(coarse.at(1, 0), 100 + 88 + 240);
        EXPECT_EQ(coarse.at(0, 1), 100 + 24 + 880);
    }
}

TEST(CoarseImage, PassesOverPixelsWithoutAValue) {
    std::vector<float> pixels = slope<float>();
    for (std::size_t row = 0; row < 40; row += 10) {
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(row), 2, std::nanf(""));
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(row) + 4, 3,
                    std::numeric_limits<float>::infinity());
    }
    const platform::ImageArray coarse = coarseImage(platform::ImageArray(10, 9, pixels));
    EXPECT_EQ(coarse.at(0, 0), 100 + 40 + 240) << "the right half";
    EXPECT_TRUE(std::isnan(coarse.at(1, 0))) << "a quarter is left";
    EXPECT_EQ(coarse.at(1, 1), 100 + 88 + 880);
}

}  // namespace
}  // namespace vantrel::correction
