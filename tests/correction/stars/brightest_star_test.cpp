#include "correction/stars/brightest_star.h"

#include <cmath>

#include <gmock/gmock.h>

#include "support/star_frames.h"

namespace vantrel::correction {
namespace {

using test::FrameDefect;
using test::FramePainter;
using test::FrameRecipe;
using test::FrameStar;
using test::FrameTrail;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

const char* const kNoStar = "No star found";
const char* const kEdgeOrWeak = "Star is too close to frame edge or is too weak";
const char* const kNotMeasurable = "Can not measure HFD for this image.";

FrameRecipe frame(int width, int height, std::vector<FrameStar> stars) {
    FrameRecipe recipe;
    recipe.width = width;
    recipe.height = height;
    recipe.stars = std::move(stars);
    return recipe;
}

void expectFailure(const BrightestStar& found, const std::string& text) {
    EXPECT_THAT(found.log, ElementsAre(text));
    EXPECT_TRUE(found.noStar);
    EXPECT_EQ(found.edgeOrWeak, text == kEdgeOrWeak);
    EXPECT_EQ(found.x, 0);
    EXPECT_EQ(found.y, 0);
    EXPECT_EQ(found.hfd, 0);
    EXPECT_EQ(found.flux, 0);
}

TEST(BrightestStar, isMeasuredToATenthOfAPixel) {
    const struct {
        const char* what;
        FrameRecipe recipe;
    } rows[] = {
        {"not decimated", frame(101, 101, {{40.3, 61.8, 3, 9000}})},
        {"nor here", frame(102, 90, {{60.5, 30.5, 2.5, 9000}})},
        {"by two, leaving a column over", frame(201, 150, {{140.2, 33.4, 3.5, 9000}})},
        {"by seven", frame(765, 510, {{500.9, 101.1, 4, 2000}})},
        {"by fourteen, taller than wide", frame(900, 1500, {{300.4, 1100.7, 2.2, 20'000}})},
        {"the sharpest", frame(400, 300, {{120.5, 200, 1.5, 15'000}})},
        {"the widest", frame(400, 300, {{120.5, 200, 8, 5000}})},
        {"far out of focus", frame(900, 700, {{400.2, 300.7, 20, 2000}})},
        {"saturated", frame(400, 300, {{120.3, 200.8, 5, 300'000}})},
        {"a gradient fifty times its noise",
         {.width = 180,
          .height = 140,
          .gradientX = 950,
          .gradientY = 950,
          .stars = {{130.2, 40.6, 3, 1500}}}},
        {"among hot pixels",
         {.width = 600, .height = 400, .stars = {{321.7, 111.2, 3, 4000}}, .wrongPixels = 3e-4}},
        {"beside a nebula with more light",
         {.width = 500, .height = 400, .nebula = {300, 150, 90, 800}, .stars = {{100.3, 300.4, 3, 4000}}}},
        {"beside a nebula as small as they come",
         {.width = 280,
          .height = 220,
          .sky = 150,
          .nebula = {140, 130, 70, 1200},
          .stars = {{220.4, 40.9, 2.5, 3500}}}},
        {"on a nebula's slope",
         {.width = 300, .height = 220, .nebula = {146, 115, 80, 500}, .stars = {{120.3, 96.4, 4, 1500}}}},
        {"of two, the brighter", frame(700, 500, {{150.1, 200.9, 3, 6000}, {550.5, 300.2, 3, 4500}})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const FrameStar& star = row.recipe.stars.front();
        const BrightestStar found = BrightestStar3(FramePainter(11).paint(row.recipe));
        EXPECT_THAT(found.log, IsEmpty());
        EXPECT_FALSE(found.noStar || found.edgeOrWeak);
        EXPECT_NEAR(found.x, star.x, 0.1);
        EXPECT_NEAR(found.y, star.y, 0.1);
        const double truth = test::trueHalfFluxDiameter(star, row.recipe.sky);
        EXPECT_NEAR(found.hfd, truth, 0.05 * truth);
        EXPECT_GT(found.size2, 0.6 * star.width);
        EXPECT_LT(found.size2, 3 * star.width);
        if (star.peak < 60'000) {
            EXPECT_NEAR(found.flux, star.flux(), 0.05 * star.flux());
        }
    }
}

TEST(BrightestStar, isToldApartFromOneThatTouchesIt) {
    const auto found =
        BrightestStar3(FramePainter(11).paint(frame(300, 200, {{100, 90, 4, 20'000}, {112, 94, 4, 4000}})));
    EXPECT_NEAR(found.x, 100, 0.1);
    EXPECT_NEAR(found.y, 90, 0.1);
}

TEST(BrightestStar, isTheSameInEveryTypeOfPixels) {
    const auto image = FramePainter(2).paint(frame(160, 120, {{70.3, 50.6, 3, 9000}}));
    const auto& counts = std::get<std::vector<std::uint16_t>>(image.pixels());
    std::vector<float> floats(counts.begin(), counts.end());
    floats[30 * 160 + 100] = NAN;
    floats[50 * 160 + 73] = INFINITY;  // in the star's outskirts
    const BrightestStar expected = BrightestStar3(image);
    for (const auto& pixels :
         {platform::ImageArray::Pixels(std::vector<std::int32_t>(counts.begin(), counts.end())),
          platform::ImageArray::Pixels(floats)}) {
        const BrightestStar found = BrightestStar3({160, 120, pixels});
        EXPECT_NEAR(found.x, expected.x, 0.1);
        EXPECT_NEAR(found.y, expected.y, 0.1);
        EXPECT_NEAR(found.hfd, expected.hfd, 0.1);
    }
    for (float& pixel : floats) pixel /= 1e7F;
    const BrightestStar faint = BrightestStar3({160, 120, floats});
    EXPECT_NEAR(faint.x, expected.x, 0.1);
    EXPECT_EQ(faint.flux, 0) << "in whole counts";
}

// Dead columns, the corners of turned and stacked images, pixels that a calibration took out.
TEST(BrightestStar, isMeasuredAmongPixelsWithoutAValue) {
    using IsBlank = bool (*)(int x, int y);
    const struct {
        const char* what;
        IsBlank isBlank;
        double near;  // pixels; what the star's own missing pixels cost
    } rows[] = {
        {"a border", [](int x, int y) { return x < 110 || y < 70 || x > 350; }, 0.1},
        {"a corner, aslant", [](int x, int y) { return x + y < 230; }, 0.1},
        {"the star's middle", [](int x, int y) { return x == 200 && y == 120; }, 0.1},
        {"a column through its wing", [](int x, int) { return x == 202; }, 0.2},
        {"rows of them", [](int, int y) { return y % 8 == 3; }, 0.1},
        {"columns of them", [](int x, int) { return x % 32 == 0; }, 0.1},
        {"one of eleven", [](int x, int y) { return (7 * x + 13 * y) % 11 == 0; }, 0.15},
        {"all but its surroundings", [](int x, int y) { return std::hypot(x - 200, y - 120) > 40; }, 0.1},
    };
    const FrameRecipe recipe{.width = 400,
                             .height = 300,
                             .gradientX = 300,
                             .stars = {{200.3, 120.2, 3.5, 6000}, {300, 200, 3, 1500}, {150, 250, 3, 1000}}};
    const auto image = FramePainter(3).paint(recipe);
    const auto& counts = std::get<std::vector<std::uint16_t>>(image.pixels());
    const auto without = [&](auto&& isBlank, float blank) {
        std::vector<float> pixels(counts.begin(), counts.end());
        for (int i = 0; i < 400 * 300; ++i)
            if (isBlank(i % 400, i / 400)) pixels[static_cast<std::size_t>(i)] = blank;
        return BrightestStar3({400, 300, pixels});
    };
    for (const auto& row : rows)
        for (const float blank : {NAN, INFINITY, -INFINITY}) {
            SCOPED_TRACE(std::string(row.what) + ", " + std::to_string(blank));
            const BrightestStar found = without(row.isBlank, blank);
            EXPECT_THAT(found.log, IsEmpty());
            EXPECT_NEAR(found.x, 200.3, row.near);
            EXPECT_NEAR(found.y, 120.2, row.near);
            EXPECT_NEAR(found.hfd, 3.5, 3.5 * row.near);
            EXPECT_NEAR(found.flux, recipe.stars[0].flux(), 0.1 * recipe.stars[0].flux());
        }
    for (const float blank : {NAN, INFINITY})
        expectFailure(without([](int x, int) { return x > 200; }, blank), kEdgeOrWeak);
}

TEST(BrightestStar, isNotFoundInNoiseNorWithoutAny) {
    for (std::uint64_t seed = 1; seed <= 24; ++seed) {
        SCOPED_TRACE(seed);
        FramePainter painter(seed);
        const int width = 90 + static_cast<int>(painter.random()() % 400);
        FrameRecipe recipe = frame(width, width * 3 / 4, {});
        recipe.wrongPixels = seed % 2 == 1 ? 1e-4 : 0;
        recipe.gradientX = seed % 3 == 2 ? 800 : 0;
        expectFailure(BrightestStar3(painter.paint(recipe)), kNoStar);
    }
    const struct {
        const char* what;
        double gradientX, gradientY, vignetting;
    } still[] = {{"even", 0, 0, 0},
                 {"a gradient", 558, 580, 0},
                 {"another one", -900, 300, 0},
                 {"dark corners", 0, 0, 0.3},
                 {"both", 400, -200, 0.5}};
    for (const auto& row : still) {
        SCOPED_TRACE(row.what);
        FrameRecipe recipe = frame(640, 480, {});
        recipe.gradientX = row.gradientX;
        recipe.gradientY = row.gradientY;
        recipe.vignetting = row.vignetting;
        recipe.noiseFree = true;
        expectFailure(BrightestStar3(FramePainter(5).paint(recipe)), kNoStar);
    }
    expectFailure(BrightestStar3({120, 90, std::vector<float>(120 * 90, 0)}), kNoStar);
}

// Columns and rows of the sensor, whole ones and parts, that show more or less than they ought to.
const FrameDefect kColumn = {211, 0, 212, 300, 1000};
const FrameDefect kThreeColumns = {211, 0, 214, 300, 3000};
const FrameDefect kRow = {0, 131, 400, 132, 1000};
const FrameDefect kThreeRows = {0, 131, 400, 134, 3000};

TEST(BrightestStar, isNoDefectiveColumnOrRow) {
    const struct {
        const char* what;
        std::vector<FrameDefect> defects;
    } rows[] = {
        {"a column", {kColumn}},
        {"three columns", {kThreeColumns}},
        {"half a column", {{90, 140, 91, 300, 1000}}},
        {"columns at the edge", {{0, 0, 2, 300, 4000}, {399, 0, 400, 300, 1000}}},
        {"faint columns", {{90, 0, 91, 300, 70}, {250, 0, 254, 300, 100}}},
        {"full wells", {{90, 0, 94, 300, 65'535, true}}},
        {"a row", {kRow}},
        {"three rows", {kThreeRows}},
        {"a column and a row", {kColumn, kRow}},
        {"a bright column beside a dark one", {kColumn, {212, 0, 213, 300, -800}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
            FrameRecipe recipe = frame(400, 300, {});
            recipe.gradientX = 200;
            recipe.defects = row.defects;
            expectFailure(BrightestStar3(FramePainter(seed).paint(recipe)), kNoStar);
        }
    }
}

TEST(BrightestStar, isFoundBesideDefectiveColumnsAndRows) {
    const struct {
        const char* what;
        double x, y, peak;
        std::vector<FrameDefect> defects;
    } rows[] = {
        {"far from a column", 90.3, 200.8, 2000, {kColumn}},
        {"a few pixels from a column", 207.3, 80.2, 2000, {kColumn}},
        {"with a column through it", 210.6, 80.2, 2000, {kColumn}},
        {"with a dead column through it", 210.6, 80.2, 2000, {{211, 0, 212, 300, 0, true}}},
        {"far from three columns", 90.3, 200.8, 10'000, {kThreeColumns}},
        {"a few pixels from three columns", 218.3, 80.2, 10'000, {kThreeColumns}},
        {"a few pixels from half a column", 207.3, 80.2, 2000, {{211, 0, 212, 150, 1000}}},
        {"fainter than the column", 205.3, 200.8, 500, {kColumn}},
        {"a few pixels from a row", 90.3, 127.2, 2000, {kRow}},
        {"a few pixels from three rows", 90.3, 138.2, 10'000, {kThreeRows}},
        {"between a column and a row", 204.3, 138.2, 2000, {kColumn, kRow}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        FrameRecipe recipe = frame(400, 300, {{row.x, row.y, 3, row.peak}});
        recipe.defects = row.defects;
        const BrightestStar found = BrightestStar3(FramePainter(11).paint(recipe));
        EXPECT_THAT(found.log, IsEmpty());
        EXPECT_NEAR(found.x, row.x, 0.25);
        EXPECT_NEAR(found.y, row.y, 0.25);
    }
}

TEST(BrightestStar, isFoundFarOutOfFocus) {
    const struct {
        double outer, inner, height;
    } rows[] = {{10, 3, 100},  {10, 4, 8000}, {20, 8, 100},   {20, 4, 20'000}, {30, 10, 500},   {40, 8, 100},
                {40, 16, 500}, {60, 20, 100}, {60, 30, 9000}, {80, 16, 150},   {80, 30, 20'000}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "radius " << row.outer << ", height " << row.height);
        FrameRecipe recipe = frame(640, 480, {});
        recipe.gradientX = 150;
        recipe.discs = {{251.3, 262.6, row.outer, row.inner, row.height}};
        const BrightestStar found = BrightestStar3(FramePainter(5).paint(recipe));
        EXPECT_THAT(found.log, IsEmpty());
        EXPECT_NEAR(found.x, 251.3, 1.5);
        EXPECT_NEAR(found.y, 262.6, 1.5);
        const double truth = std::sqrt(2 * (row.outer * row.outer + row.inner * row.inner));
        EXPECT_NEAR(found.hfd, truth, 0.1 * truth);
    }
    FrameRecipe atEdge = frame(640, 480, {});
    atEdge.discs = {{60, 262, 70, 20, 2000}};
    expectFailure(BrightestStar3(FramePainter(5).paint(atEdge)), kEdgeOrWeak);
}

TEST(BrightestStar, isNoTrack) {
    const double out = 2000;  // pixels: far beyond the frame
    const struct {
        const char* what;
        std::vector<FrameTrail> tracks;
    } rows[] = {
        {"right across, aslant", {{-out, -out, out, out, 3, 12'000}}},
        {"steeper", {{200, -out, 380, out, 2, 4000}}},
        {"along a row, nearly", {{-out, 380, out, 410, 4, 30'000}}},
        {"along a column", {{150, -out, 150, out, 3, 12'000}}},
        {"ends in the frame", {{520, 200, out, 330, 4, 12'000}}},
        {"flashes", {{-600, -160, 1400, 900, 3, 12'000, 40, 30}}},
        {"two that cross", {{-out, -out, out, out, 3, 12'000}, {-out, 460, out, 300, 3, 6000}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        FrameRecipe recipe = frame(640, 480, {{400.4, 170.7, 3, 2000}});
        recipe.trails = row.tracks;
        const BrightestStar found = BrightestStar3(FramePainter(5).paint(recipe));
        EXPECT_THAT(found.log, IsEmpty());
        EXPECT_NEAR(found.x, 400.4, 0.15);
        EXPECT_NEAR(found.y, 170.7, 0.15);
        recipe.stars.clear();
        expectFailure(BrightestStar3(FramePainter(6).paint(recipe)), kNoStar);
    }
}

// Wind and a bad drive: what is as narrow as a track, but no longer than this, stays a star.
TEST(BrightestStar, mayTrail) {
    for (const double length : {10.0, 25.0, 45.0}) {
        SCOPED_TRACE(length);
        FrameRecipe recipe = frame(640, 480, {});
        const double dx = 0.4 * length, dy = 0.3 * length;  // half of it
        recipe.trails = {{400.4 - dx, 170.7 - dy, 400.4 + dx, 170.7 + dy, 3, 3000}};
        const BrightestStar found = BrightestStar3(FramePainter(5).paint(recipe));
        EXPECT_THAT(found.log, IsEmpty());
        EXPECT_NEAR(found.x, 400.4, 2);
        EXPECT_NEAR(found.y, 170.7, 2);
    }
}

TEST(BrightestStar, mustNotLieInTheOutermostStripesNorReachTheEdge) {
    const struct {
        const char* what;
        int width, height;
        double x, y, size;
        bool found;
    } rows[] = {
        // 20 stripes of 5 columns each, and one column left over behind them
        {"last pixel of the first stripe", 101, 101, 4.3, 50, 1.6, false},
        {"second stripe", 101, 101, 5.7, 50, 1.6, true},
        {"first pixel of the last stripe", 101, 101, 94.7, 50, 1.6, false},
        {"last stripe but one", 101, 101, 94.3, 50, 1.6, true},
        {"top row of stripes", 101, 101, 50, 4.3, 1.6, false},
        {"second row of stripes", 101, 101, 50, 5.7, 1.6, true},
        {"bottom row of stripes", 101, 101, 50, 94.7, 1.6, false},
        {"last row of stripes but one", 101, 101, 50, 94.3, 1.6, true},
        // 21 stripes of 5 × 14 columns from column 14 on
        {"decimated, first stripe", 1500, 1000, 83, 500, 3, false},
        {"decimated, second stripe", 1500, 1000, 84, 500, 3, true},
        {"so wide that its light reaches the edge", 101, 101, 9, 50, 7, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto found = BrightestStar3(
            FramePainter(7).paint(frame(row.width, row.height, {{row.x, row.y, row.size, 15'000}})));
        if (!row.found) {
            expectFailure(found, kEdgeOrWeak);
            continue;
        }
        EXPECT_NEAR(found.x, row.x, 0.1);
        EXPECT_NEAR(found.y, row.y, 0.1);
    }
}

TEST(BrightestStar, isTooWeakWhenItsCentreIsLostInTheNoise) {
    const double noise = FrameRecipe().noise();
    int weak = 0;
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        const auto found =
            BrightestStar3(FramePainter(seed).paint(frame(150, 110, {{70, 50, 8, 5.5 * noise}})));
        weak += found.edgeOrWeak;
        expectFailure(found, found.edgeOrWeak ? kEdgeOrWeak : kNoStar);
    }
    EXPECT_GT(weak, 0);
}

TEST(BrightestStar, namesWhatItCanNotMeasure) {
    expectFailure(BrightestStar3({0, 0, std::vector<float>()}), kNotMeasurable);
    expectFailure(BrightestStar3({120, 90, std::vector<float>(120 * 90, NAN)}), kNotMeasurable);
    // One row: no stripe of columns has a profile, and there is no stripe of rows.
    const BrightestStar row = BrightestStar3({100, 1, std::vector<float>(100, 5)});
    ASSERT_EQ(row.log.size(), 21U);
    EXPECT_THAT(std::vector<std::string>(row.log.begin(), row.log.end() - 1),
                Each("Error in Peak Subroutine"));
    EXPECT_EQ(row.log.back(), kNotMeasurable);
    EXPECT_EQ(row.failure, BrightestStar::Failure::kNotMeasurable);
    EXPECT_TRUE(row.noStar);
}

}  // namespace
}  // namespace vantrel::correction
