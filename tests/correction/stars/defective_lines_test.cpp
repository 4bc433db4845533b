#include "correction/stars/defective_lines.h"

#include <gmock/gmock.h>

#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using test::FramePainter;
using test::FrameRecipe;

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
    const struct {
        const char* what;
        void (*change)(FrameRecipe&);
    } rows[] = {
        {"stars",
         [](FrameRecipe& r) {
             r.stars = {{200, 150, 8, 200'000}, {60, 60, 4, 20'000}};
         }},
        {"a star that trails along a column",
         [](FrameRecipe& r) {
             r.trails = {{200, 120, 200, 170, 3, 20'000}};
         }},
        {"a star out of focus",
         [](FrameRecipe& r) {
             r.discs = {{200, 150, 80, 20, 5000}};
         }},
        {"a nebula",
         [](FrameRecipe& r) {
             r.nebula = {200, 150, 70, 3000};
         }},
        {"a mosaic of colours", [](FrameRecipe& r) { r.mosaic = true; }},
        {"hot pixels", [](FrameRecipe& r) { r.wrongPixels = 1e-3; }},
        {"a gradient without noise",
         [](FrameRecipe& r) {
             r.gradientX = r.gradientY = 570;
             r.noiseFree = true;
         }},
    };
    for (const auto& row : rows) {
        FrameRecipe recipe = frame();
        row.change(recipe);
        const platform::ImageArray image = FramePainter(3).paint(recipe);
        const platform::ImageArray same = mended(image);
        EXPECT_EQ(&same.pixels(), &image.pixels()) << row.what;
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
    std::vector<std::uint16_t> pixels;
    for (int i = 0; i < 120 * 90; ++i) pixels.push_back(i % 120 % 4 < 2 ? 1000 : 3000);
    const platform::ImageArray image(120, 90, pixels);
    EXPECT_EQ(mended(image).width(), 120U);
    for (const std::size_t side : {1U, 8U, 20U, 40U, 71U})
        EXPECT_EQ(mended({side, side, std::vector<float>(side * side, 1)}).width(), side);
}

}  // namespace
}  // namespace vantrel::correction
