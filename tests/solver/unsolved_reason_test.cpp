#include "solver/unsolved_reason.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "sky/compact_catalog.h"
#include "support/star_field.h"

namespace vantrel::solver {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

StarList starsOf(std::size_t count, StarLook look = {.width = 3}) {
    StarList list;
    list.stars.resize(count);
    list.look = look;
    return list;
}

TEST(WhyUnsolved, NamesWhatIsMissingWithFigures) {
    const PlateGeometry seconds{1000, 800, 2, 2, 1};
    const PlateGeometry coarse{1000, 800, 40, 40, 1};
    const struct {
        const char* why;
        StarList stars;
        SoughtField field;
        const char* says;
    } cases[] = {
        {"nothing at all", starsOf(0), {seconds, {}, 180, 40.0}, "No stars were found"},
        {"trailed",
         starsOf(30, {3, 14.2, 35}),
         {seconds, {}, 180, 40.0},
         "The stars are trailed by 14 pixels at 35 degrees to the rows"},
        {"hardly drawn out", starsOf(30, {5, 6, 35}), {seconds, {}, 180, 40.0}, "The stars look sound"},
        {"out of focus",
         starsOf(30, {18, 0, 0}),
         {seconds, {}, 180, 40.0},
         "The stars are 18 pixels wide: out of focus?"},
        {"fine pixels in bad air are no fault",
         starsOf(30, {18, 0, 0}),
         {{1000, 800, 0.3, 0.3, 1}, {}, 180, 40.0},
         "The stars look sound"},
        {"too few for any field", starsOf(3), {seconds, {}, 180, 5.0}, "Only 3 of the 6 stars"},
        {"clouds",
         starsOf(12),
         {seconds, {}, 180, 80.2},
         "12 stars were found where about 80 are expected at this scale: clouds"},
        {"a wide field",
         starsOf(12),
         {coarse, {}, 180, 300.0},
         "12 stars were found where 300 or more are expected"},
        {"hot pixels",
         starsOf(900),
         {seconds, {}, 180, 40.0},
         "900 stars were found where about 40 are expected at this scale: hot pixels"},
        {"elsewhere",
         starsOf(40),
         {seconds, sky::SkyPosition{10, 20}, 1.5, 40.0},
         "The stars look sound, but no place within 1.5 degrees of the start fits them: is the picture "
         "elsewhere, or "
         "its scale of 2.00\""},
        {"nowhere",
         starsOf(40),
         {seconds, {}, 180, 40.0},
         "The stars look sound, but no place in the whole sky"},
        {"of no scale",
         starsOf(40),
         {{1000, 800, 0, 0, 1}, {}, 180, {}},
         "The stars look sound, but no place that"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(whyUnsolved(c.stars, c.field).english(), StartsWith(c.says)) << c.why;
}

TEST(StarsExpected, CountsTheFieldOrGoesByTheMean) {
    const auto catalog = sky::CompactCatalog::openBuiltIn();
    const PlateGeometry degree{1000, 1000, 3.6, 3.6, 1};
    EXPECT_NEAR(starsExpected({degree, {}, 180, {}}, *catalog).value(), 62, 1);
    const double crowded = starsExpected({degree, sky::SkyPosition{300, 35}, 1, {}}, *catalog).value();
    const double empty = starsExpected({degree, sky::SkyPosition{192, 27}, 1, {}}, *catalog).value();
    EXPECT_GT(crowded, 100) << "in the Milky Way";
    EXPECT_LT(empty, 45) << "at its pole";
    EXPECT_FALSE(starsExpected({{1000, 1000, 0, 0, 1}, {}, 180, {}}, *catalog));
}

/// What spoils a night: the stars are found all the same, and what they look like is told.
TEST(FindStars, TellsTrailsAndFocus) {
    constexpr int kWidth = 1000, kHeight = 800;
    const struct {
        const char* why;
        double trail, disc;
        int hotColumns;
        double width, widthError, length, lengthError;
    } cases[] = {
        {"sharp", 0, 0, 0, 3, 1, 0, 0},
        {"a short trail", 12, 0, 0, 3, 1.5, 12, 3},
        {"a long one, which the noise breaks", 60, 0, 0, 8, 6, 50, 20},
        {"out of focus: as wide as the light spreads", 0, 16, 0, 20, 4, 0, 0},
        {"hot columns are no trails", 0, 0, 40, 3, 1, 0, 0},
    };
    test::FramePainter painter(3);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        test::FrameRecipe recipe;
        recipe.width = kWidth;
        recipe.height = kHeight;
        recipe.sky = 300;
        for (int i = 0; i < 40; ++i) {
            const double x = 60 + i % 8 * 120.0 + i * 3 % 11, y = 70 + i / 8 * 155.0 + i * 7 % 13;
            const double light = 60'000 + 4000 * i;
            if (c.trail > 0)
                recipe.trails.push_back(
                    {x, y, x + 0.8 * c.trail, y + 0.6 * c.trail, 3, light / (3.2 * c.trail), 0, 0});
            else if (c.disc > 0)
                recipe.discs.push_back({x, y, c.disc, 0.4 * c.disc, light / (2.64 * c.disc * c.disc), 1.5});
            else
                recipe.stars.push_back({x, y, 3, light / 10});
        }
        for (int i = 0; i < c.hotColumns; ++i)
            recipe.defects.push_back({11 + i * 23, 0, 12 + i * 23, i % 2 == 0 ? kHeight : 500, 3000, false});
        painter.startAt(1);
        const StarList list = findStars(fits::FitsImage::of(painter.paint(recipe)), {});
        EXPECT_GE(list.stars.size(), 36U);
        EXPECT_LE(list.stars.size(), 48U);
        EXPECT_NEAR(list.look.width, c.width, c.widthError);
        EXPECT_NEAR(list.look.trail, c.length, c.lengthError);
        EXPECT_GE(list.grain * 3.01, c.length) << "their middles aren't known better";
        EXPECT_NEAR(list.look.trailDeg, c.length > 0 ? 36.9 : 0, 5);
    }
}

}  // namespace
}  // namespace vantrel::solver
