#include "correction/stars/star_under_point.h"

#include <cmath>

#include <gmock/gmock.h>

#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using test::FramePainter;
using test::FrameRecipe;
using test::FrameStar;

struct Pointed {
    const char* what;
    double x, y;       // where somebody points
    std::size_t star;  // of the frame below
};

const FrameStar kStars[] = {
    {60.3, 40.7, 3, 20'000},  {95.8, 41.2, 2, 3000},    {2.4, 70.1, 4, 9000},
    {150.2, 80.6, 8, 30'000}, {110, 105, 8, 1'000'000}, {20, 126, 3, 9000},
};

FrameRecipe fieldOfStars() {
    FrameRecipe recipe;
    recipe.width = 200;
    recipe.height = 130;
    recipe.gradientX = 500;
    recipe.stars.assign(std::begin(kStars), std::end(kStars));
    return recipe;
}

TEST(StarUnderPoint, isMeasuredWhereverThePointLiesNearIt) {
    const FrameRecipe recipe = fieldOfStars();
    const auto image = FramePainter(3).paint(recipe);
    const Pointed rows[] = {
        {"its middle", 60, 41, 0},
        {"beside it", 68, 34, 0},
        {"the fainter neighbour, not the brighter star 35 pixels away", 94, 43, 1},
        {"at the frame's edge", 2, 70, 2},
        {"the outskirts of a wide one", 160, 72, 3},
        {"the rim of a saturated one", 123, 99, 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto found = measureStarAt(image, row.x, row.y);
        if (!found) {
            ADD_FAILURE() << "no star";
            continue;
        }
        const FrameStar& star = kStars[row.star];
        const bool saturated = star.peak > 65'535;
        EXPECT_NEAR(found->x, star.x, saturated ? 0.5 : 0.1);
        EXPECT_NEAR(found->y, star.y, saturated ? 0.5 : 0.1);
        EXPECT_NEAR(found->halfFluxDiameter, test::trueHalfFluxDiameter(star, recipe.sky),
                    0.05 * found->halfFluxDiameter);
        if (saturated) {
            EXPECT_EQ(found->peak, 65'535);
            continue;
        }
        // A pixel's share of the gaussian's height: the brightest one of a star 2 pixels wide gets two
        // thirds.
        EXPECT_GT(found->peak, recipe.sky - 250 + 0.6 * star.peak);
        EXPECT_LT(found->peak, recipe.sky + 250 + 1.05 * star.peak);
        EXPECT_NEAR(found->flux, star.flux(), 0.06 * star.flux());
        // Of gaussian light on even noise: its flux over the noise of the 4 π σ² pixels that it counts in.
        const double expected = star.flux() / (recipe.noise() * std::sqrt(4 * 3.14159265) * star.sigma());
        EXPECT_NEAR(found->signalToNoise, expected, 0.2 * expected);
    }
}

TEST(StarUnderPoint, isNoDefectiveColumn) {
    FrameRecipe recipe;
    recipe.width = recipe.height = 160;
    recipe.defects = {{83, 0, 84, 160, 3000}};
    EXPECT_FALSE(measureStarAt(FramePainter(3).paint(recipe), 80, 80));
    recipe.stars = {{78.3, 80.6, 3, 2000}};
    const auto found = measureStarAt(FramePainter(3).paint(recipe), 80, 80);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->x, 78.3, 0.2);
    EXPECT_NEAR(found->y, 80.6, 0.2);
}

TEST(StarUnderPoint, hasAPeakAmongPixelsWithoutAValue) {
    FrameRecipe recipe;
    recipe.stars = {{50, 40, 4, 9000}};
    const auto image = FramePainter(5).paint(recipe);
    const auto& counts = std::get<std::vector<std::uint16_t>>(image.pixels());
    const double whole = measureStarAt(image, 50, 40)->peak;
    for (const float blank : {NAN, INFINITY}) {
        std::vector<float> pixels(counts.begin(), counts.end());
        for (std::size_t i = 0; i < pixels.size(); ++i)
            if (i % 100 == 48 || i / 100 == 38) pixels[i] = blank;
        const auto found = measureStarAt({100, 100, pixels}, 50, 40);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->peak, whole);
    }
}

TEST(StarUnderPoint, isNothingWhereThereIsNone) {
    FrameRecipe recipe = fieldOfStars();
    recipe.wrongPixels = 0.001;
    const auto image = FramePainter(4).paint(recipe);
    const double rows[][2] = {{30, 20},           {60, 70},      {180, 20},   {45, 105},    // sky
                              {-1, 40},           {60, -0.6},    {199.6, 40}, {20, 129.6},  // outside
                              {std::nan(""), 40}, {60, HUGE_VAL}};
    for (const auto& [x, y] : rows) EXPECT_FALSE(measureStarAt(image, x, y)) << x << ", " << y;
    EXPECT_FALSE(measureStarAt({0, 0, std::vector<float>{}}, 0, 0));
}

}  // namespace
}  // namespace vantrel::correction
