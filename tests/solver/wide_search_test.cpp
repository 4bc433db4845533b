// Searches of the whole sky for where a field was drawn.

#include "solver/wide_search.h"

#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "sky/compact_catalog.h"
#include "support/list_catalog.h"
#include "support/star_field.h"

namespace vantrel::solver {
namespace {

using sky::SkyPosition;

/// A sky of its own, small enough that its patterns are made in no time: 12,000 stars down to magnitude 8,
/// ten times as many with each 2.2 magnitudes.
const test::ListCatalog& sky() {
    static const test::ListCatalog catalog = [] {
        std::mt19937 random(90);
        std::vector<sky::CatalogStar> stars;
        for (int i = 1; i <= 12'000; ++i) {
            const SkyPosition p = test::anywhere(random);
            stars.push_back({p.ra, p.dec, 8 + 2.2 * std::log10(i / 12'000.0)});
        }
        return test::ListCatalog(std::move(stars));
    }();
    return catalog;
}

const StarPatterns& patterns() {
    static const auto made = StarPatterns::build(sky(), 1);
    return *made;
}

test::StarField wideField(SkyPosition centre, double widthDeg, double turn, bool mirrored) {
    test::StarField field;
    field.width = 700;
    field.height = 500;
    field.tenthMagnitude = 1500;
    field.wcs = test::wcsFor(field.width, field.height, centre, widthDeg * 3600 / 700, turn, mirrored);
    return field;
}

struct Seen {
    StarList list;
    PlateGeometry geometry;
};

Seen seen(const test::StarField& field, double scale) {
    const auto counts = test::drawField(&sky(), field);
    const fits::FitsImage image(field.width, field.height, std::vector<float>(counts.begin(), counts.end()));
    Seen result{findStars(image, {}), {}};
    result.geometry = {static_cast<double>(field.width), static_cast<double>(field.height), scale, scale,
                       result.list.grain};
    return result;
}

TEST(SearchWide, FindsFieldsWithoutKnowingWhere) {
    const struct {
        const char* why;
        SkyPosition centre;
        double widthDeg, turn;
        bool mirrored;
        double scaleError;
    } cases[] = {
        {"anywhere", {83, 21}, 12, 10, false, 0.02},
        {"mirrored", {83, 21}, 12, 10, true, 0.02},
        {"the pole", {10, 89.5}, 14, 200, false, -0.02},
        {"the other pole", {77, -89.9}, 14, 120, true, 0.02},
        {"across 0 hours", {359.9, -12}, 12, 77, false, 0},
        {"a scale hardly known", {200, -40}, 13, 300, true, 0.14},
        {"nor in the other direction", {201, -41}, 13, 300, false, -0.14},
        {"wide", {300, 50}, 25, -60, false, 0.01},
    };
    for (const auto& c : cases) {
        const auto field = wideField(c.centre, c.widthDeg, c.turn, c.mirrored);
        const double scale = c.widthDeg * 3600 / 700;
        const Seen image = seen(field, scale * (1 + c.scaleError));
        const auto found = searchWide(image.geometry, image.list.stars, patterns(), sky(), {});
        ASSERT_TRUE(found) << c.why;
        EXPECT_LT(sky::separationDeg(found->plate.centre, c.centre) * 3600, 0.5 * scale) << c.why;
        EXPECT_EQ(found->plate.mirrored(), c.mirrored) << c.why;
        EXPECT_NEAR(found->plate.orientation.scaleX / scale, 1, 0.002) << c.why;
    }
}

TEST(SearchWide, TriesAllScalesWhenNoneIsKnown) {
    for (const double width : {9.0, 20.0}) {
        const auto field = wideField({140, 35}, width, 33, false);
        const Seen image = seen(field, 1);
        const auto found = searchWideAnyScale(image.geometry, image.list.stars, patterns(), sky(), {});
        ASSERT_TRUE(found) << width;
        EXPECT_LT(sky::separationDeg(found->plate.centre, {140, 35}), 0.01) << width;
    }
}

TEST(SearchWide, KeepsToTheRadius) {
    const auto field = wideField({140, 35}, 12, 33, false);
    const Seen image = seen(field, 12 * 3600 / 700.0);
    WideSettings settings;
    settings.start = {140, 55};
    for (const double radius : {19.0, 21.0}) {
        settings.radiusDeg = radius;
        EXPECT_EQ(searchWide(image.geometry, image.list.stars, patterns(), sky(), settings).has_value(),
                  radius > 20)
            << radius;
    }
}

TEST(SearchWide, EndsSoonAfterItIsGivenUp) {
    const auto field = wideField({140, 35}, 12, 33, false);
    const Seen image = seen(field, 12 * 3600 / 700.0);
    int asked = 0;
    WideSettings settings;
    settings.givenUp = [&] { return ++asked > 0; };
    EXPECT_FALSE(searchWideAnyScale(image.geometry, image.list.stars, patterns(), sky(), settings));
    EXPECT_LT(asked, 100);
}

// Nothing may be found in noise, in points strewn at random, or in a sky that the patterns don't show.
TEST(SearchWide, FindsNothingWhereNothingIs) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> x(0, 699);
    std::uniform_real_distribution<double> y(0, 499);
    for (const std::size_t count : {0U, 3U, 4U, 10U, 40U, 300U}) {
        std::vector<ImageStar> points;
        for (std::size_t i = 0; i < count; ++i)
            points.push_back({x(random), y(random), 1e5 / static_cast<double>(i + 1)});
        const PlateGeometry geometry{700, 500, 60, 60, 1};
        EXPECT_FALSE(searchWide(geometry, points, patterns(), sky(), {})) << count;
        EXPECT_FALSE(searchWideAnyScale(geometry, points, patterns(), sky(), {})) << count;
    }
    auto field = wideField({83, 21}, 12, 10, false);
    const Seen image = seen(field, 12 * 3600 / 700.0);
    const auto nothing = StarPatterns::build(test::ListCatalog({}), 1);
    EXPECT_FALSE(searchWide(image.geometry, image.list.stars, *nothing, sky(), {})) << "no patterns";
    const test::ListCatalog empty({});
    EXPECT_FALSE(searchWide(image.geometry, image.list.stars, patterns(), empty, {})) << "no catalogue";
}

}  // namespace
}  // namespace vantrel::solver
