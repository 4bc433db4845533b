#include "correction/stars/star_follower.h"

#include <cmath>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "correction/stars/star_under_point.h"
#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using test::FrameDefect;
using test::FramePainter;
using test::FrameRecipe;
using test::FrameStar;
using test::FrameTrail;

struct Place {
    double x, y;
};

/// What one exposure shows.
struct Exposure {
    std::vector<FrameStar> stars;
    std::vector<FrameTrail> trails = {};
    std::optional<Place> found = {};  // nothing: no star may be found
};

FrameStar star(double x, double y, double peak = 8000, double width = 4) { return {x, y, width, peak}; }

/// The star at its place, and others.
Exposure at(const FrameStar& ours, std::vector<FrameStar> others = {}) {
    others.insert(others.begin(), ours);
    return {std::move(others), {}, Place{ours.x, ours.y}};
}

const FrameStar kFaint = star(700, 300, 1500), kBrighter = star(900, 500, 50'000, 5);
const Exposure kStart = at(star(400, 300), {kFaint, kBrighter}), kWithoutIt{{kFaint, kBrighter}};

struct Evening {
    const char* what;
    std::vector<Exposure> exposures;  // the star begins at (400, 300) and is to go to (700, 420)
};

const Evening kEvenings[] = {
    {"moves by and by",
     {kStart, at(star(440, 315), {kFaint, kBrighter}), at(star(490, 340)), at(star(490, 340))}},
    {"passes a brighter star that comes into sight beside it",
     {kStart, at(star(430, 310), {star(450, 318, 60'000, 6)}),
      at(star(470, 325), {star(445, 318, 60'000, 6)})}},
    {"passes a star as bright as itself",
     {kStart, at(star(420, 300), {star(440, 330)}), at(star(436, 300), {star(440, 330)})}},
    {"fades behind a thin cloud",
     {kStart, at(star(410, 304, 3000)), at(star(415, 306, 1500)), at(star(420, 308, 7000))}},
    {"vanishes behind a thick one, and only fainter or brighter stars are left",
     {kStart, kWithoutIt, kWithoutIt, at(star(410, 305), {kFaint, kBrighter})}},
    {"leaps along its way", {kStart, at(star(650, 400), {kFaint})}},
    {"leaps off its way", {kStart, at(star(150, 650), {kFaint})}},
    {"runs out of the frame and comes back",
     {at(star(400, 300)),
      at(star(400, 250)),
      at(star(400, 190)),
      at(star(400, 130)),
      at(star(400, 70)),
      at(star(400, 20)),
      {{star(400, 1)}},
      {{kFaint}},
      at(star(400, 30))}},
    {"isn't the satellite that passes",
     {kStart, {{star(420, 305)}, {{330, 250, 520, 270, 4, 9000}}, Place{420, 305}}}},
    {"is moved while the shutter is open, and then rests",
     {kStart, {{}, {{405, 300, 435, 316, 4, 1800}}, Place{420, 308}}, at(star(470, 330))}},
    {"is far from sharp", {at(star(400, 300, 1500, 16)), at(star(430, 290, 1500, 17))}},
};

TEST(StarFollower, KeepsToItsStar) {
    FramePainter painter(7);
    for (const Evening& evening : kEvenings) {
        StarFollower follower(402, 299, 700, 420);
        int number = 0;
        for (const Exposure& exposure : evening.exposures) {
            FrameRecipe recipe;
            recipe.width = 1000;
            recipe.height = 800;
            recipe.stars = exposure.stars;
            recipe.trails = exposure.trails;
            recipe.wrongPixels = 0.001;
            const auto found = follower.find(painter.paint(recipe));
            SCOPED_TRACE(std::string(evening.what) + ", exposure " + std::to_string(++number));
            ASSERT_EQ(found.has_value(), exposure.found.has_value())
                << (found ? std::to_string(found->x) + " " + std::to_string(found->y) : "");
            if (!found) continue;
            EXPECT_NEAR(found->x, exposure.found->x, 0.5);
            EXPECT_NEAR(found->y, exposure.found->y, 0.5);
        }
    }
}

TEST(StarFollower, SeesThroughMarks) {
    FrameRecipe recipe;
    recipe.width = recipe.height = 400;
    recipe.stars = {star(200, 150, 8000)};
    const auto bare = FramePainter(3).paint(recipe);
    std::vector<std::size_t> cross;
    for (std::size_t i = 0; i < 400; ++i)
        for (std::size_t wide = 0; wide < 3; ++wide) {
            cross.push_back((150 + wide) * 400 + i);
            cross.push_back(i * 400 + 200 + wide);
        }
    StarFollower follower(200, 150, 200, 150);
    const auto found = follower.find(bare.withPixels(cross, 65535));
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->x, 200, 0.1);
    EXPECT_NEAR(found->y, 150, 0.1);
}

TEST(StarFollower, KnowsItsStarAgainAfterASlewButNoStarThatItNeverSaw) {
    FrameRecipe recipe;
    recipe.width = recipe.height = 600;
    recipe.stars = {star(300, 300)};
    FramePainter painter(4);
    StarFollower seen(300, 300, 300, 300), unseen(100, 100, 100, 100);
    EXPECT_TRUE(seen.find(painter.paint(recipe)));
    EXPECT_FALSE(unseen.find(painter.paint(recipe)));
    seen.lose();
    unseen.lose();
    recipe.stars = {star(80, 520)};
    const auto found = seen.find(painter.paint(recipe));
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->x, 80, 0.1);
    EXPECT_FALSE(unseen.find(painter.paint(recipe)));
}

// ---- a star under the cursor

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
