#include "correction/stars/star_follower.h"

#include <cmath>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

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

struct Evening {
    const char* what;
    std::vector<Exposure> exposures;  // the star begins at (400, 300) and is to go to (700, 420)
};

FrameStar star(double x, double y, double peak = 8000, double width = 4) { return {x, y, width, peak}; }

std::vector<Evening> evenings() {
    const FrameStar faint = star(700, 300, 1500), brighter = star(900, 500, 50'000, 5);
    const Exposure start{{star(400, 300), faint, brighter}, {}, Place{400, 300}};
    return {
        {"moves by and by",
         {start,
          {{star(440, 315), faint, brighter}, {}, Place{440, 315}},
          {{star(490, 340), faint, brighter}, {}, Place{490, 340}},
          {{star(490, 340), faint, brighter}, {}, Place{490, 340}}}},
        {"passes a brighter star that comes into sight beside it",
         {start,
          {{star(430, 310), star(450, 318, 60'000, 6)}, {}, Place{430, 310}},
          {{star(470, 325), star(445, 318, 60'000, 6)}, {}, Place{470, 325}}}},
        {"passes a star as bright as itself",
         {start,
          {{star(420, 300), star(440, 330)}, {}, Place{420, 300}},
          {{star(436, 300), star(440, 330)}, {}, Place{436, 300}}}},
        {"fades behind a thin cloud",
         {start,
          {{star(410, 304, 3000)}, {}, Place{410, 304}},
          {{star(415, 306, 1500)}, {}, Place{415, 306}},
          {{star(420, 308, 7000)}, {}, Place{420, 308}}}},
        {"vanishes behind a thick one, and only fainter or brighter stars are left",
         {start,
          {{faint, brighter}},
          {{faint, brighter}},
          {{star(410, 305), faint, brighter}, {}, Place{410, 305}}}},
        {"leaps along its way", {start, {{star(650, 400), faint}, {}, Place{650, 400}}}},
        {"leaps off its way", {start, {{star(150, 650), faint}, {}, Place{150, 650}}}},
        {"runs out of the frame and comes back",
         {{{star(400, 300)}, {}, Place{400, 300}},
          {{star(400, 250)}, {}, Place{400, 250}},
          {{star(400, 190)}, {}, Place{400, 190}},
          {{star(400, 130)}, {}, Place{400, 130}},
          {{star(400, 70)}, {}, Place{400, 70}},
          {{star(400, 20)}, {}, Place{400, 20}},
          {{star(400, 1)}},
          {{faint}},
          {{star(400, 30)}, {}, Place{400, 30}}}},
        {"isn't the satellite that passes",
         {start, {{star(420, 305)}, {{330, 250, 520, 270, 4, 9000}}, Place{420, 305}}}},
        {"is moved while the shutter is open, and then rests",
         {start,
          {{}, {{405, 300, 435, 316, 4, 1800}}, Place{420, 308}},
          {{star(470, 330)}, {}, Place{470, 330}}}},
        {"is far from sharp",
         {{{star(400, 300, 1500, 16)}, {}, Place{400, 300}},
          {{star(430, 290, 1500, 17)}, {}, Place{430, 290}}}},
    };
}

TEST(StarFollower, KeepsToItsStar) {
    FramePainter painter(7);
    for (const Evening& evening : evenings()) {
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

}  // namespace
}  // namespace vantrel::correction
