// Searches of the whole sky for where a field was drawn.

#include "solver/wide_search.h"

#include <random>

#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "sky/compact_catalog.h"
#include "sky/tangent_wcs.h"
#include "sky/tycho_distribution.h"
#include "solver/pattern_store.h"
#include "solver/star_patterns.h"
#include "support/list_catalog.h"
#include "support/refusal.h"
#include "support/star_field.h"
#include "support/temp_folder.h"

namespace vantrel::solver {
namespace {

using sky::CatalogStar;
using sky::kDegree;
using sky::separation;
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

// ---- patterns

constexpr std::uint32_t kId = 77;

sky::Vector3 directionTo(SkyPosition p) { return sky::direction(p.ra * kDegree, p.dec * kDegree); }

float chordOf(SkyPosition a, SkyPosition b) {
    return static_cast<float>(2 * std::sin(sky::separationDeg(a, b) / 2 * kDegree));
}

/// Four stars, the faintest in the midst of the others, with its place at the given one.
std::vector<CatalogStar> fourStars(SkyPosition middle) {
    std::vector<CatalogStar> stars;
    double magnitude = 5;
    for (const sky::PlanePosition at : {sky::PlanePosition{0.7, 0.1}, {-0.4, 0.6}, {-0.2, -0.9}, {0, 0}}) {
        const SkyPosition p = sky::fromTangentPlane(at, middle);
        stars.push_back({p.ra, p.dec, magnitude});
        magnitude += 1;
    }
    return stars;
}

std::vector<StarPatterns::Match> alike(const StarPatterns& patterns, const PatternShape& shape, float reach) {
    std::vector<StarPatterns::Match> found;
    patterns.visitAlike(shape, reach, shape.size * 0.97F, shape.size * 1.03F,
                        [&](const StarPatterns::Match& match, const PatternShape&) {
                            found.push_back(match);
                            return true;
                        });
    return found;
}

// A triangle is found by its lengths wherever it lies, as the stars that it was made of.
TEST(StarPatterns, FindATriangleAnywhereOnTheSky) {
    for (const SkyPosition middle :
         {SkyPosition{120, 20}, {0, 0}, {359.999, -45}, {10, 89.9}, {200, 90}, {50, -90}}) {
        const auto stars = fourStars(middle);
        const auto patterns = StarPatterns::build(test::ListCatalog(stars), kId);
        ASSERT_EQ(patterns->stars().size(), 4U);
        const SkyPosition faint{stars[3].raDeg, stars[3].decDeg};
        const SkyPosition near{stars[0].raDeg, stars[0].decDeg};
        const SkyPosition far{stars[2].raDeg, stars[2].decDeg};
        const auto shape = PatternShape::of(chordOf(faint, near), chordOf(faint, far), chordOf(near, far));
        const auto found = alike(*patterns, shape, 1e-4F);
        ASSERT_EQ(found.size(), 1U) << middle.ra << ' ' << middle.dec;
        const SkyPosition places[] = {faint, near, far};
        const std::uint32_t indices[] = {found[0].star, found[0].near, found[0].far};
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_LT(separation(patterns->directionOf(indices[i]), directionTo(places[i])), 1e-5)
                << middle.ra << ' ' << middle.dec << ", corner " << i;
        }
        PatternShape other = shape;
        other.lead += 0.01F;
        EXPECT_TRUE(alike(*patterns, other, 5e-3F).empty());
        other = shape;
        other.size *= 1.05F;
        EXPECT_TRUE(alike(*patterns, other, 1e-4F).empty());
    }
}

std::vector<CatalogStar> randomStars(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> magnitude(0, 10);
    std::vector<CatalogStar> stars;
    for (std::size_t i = 0; i < count; ++i) {
        const SkyPosition p = test::anywhere(random);
        stars.push_back({p.ra, p.dec, magnitude(random)});
    }
    return stars;
}

TEST(StarPatterns, TakeTheBrightestOfEachCellOfSky) {
    std::vector<CatalogStar> crowd;
    crowd.reserve(50);
    for (int i = 0; i < 50; ++i) crowd.push_back({100.01 + 0.004 * i, 0.25, 12 - 0.1 * i});
    const auto patterns = StarPatterns::build(test::ListCatalog(crowd), kId, 6);
    ASSERT_EQ(patterns->stars().size(), 6U);
    for (const PatternStar& star : patterns->stars()) EXPECT_LE(star.tenths, 10 * (7.6 + 3));
    EXPECT_EQ(StarPatterns::build(test::ListCatalog({}), kId)->patternCount(), 0U) << "an empty sky";
}

class PatternFile : public testing::Test {
  protected:
    PatternFile() { made_->save(file_); }

    std::string reasonOf(std::uint32_t id = kId) const {
        return test::refusalOf<PatternError>([&] { StarPatterns::open(file_, id); });
    }

    test::TempFolder folder_;
    std::filesystem::path file_ = folder_ / "patterns.bin";
    std::shared_ptr<const StarPatterns> made_ =
        StarPatterns::build(test::ListCatalog(randomStars(400, 7)), kId);
};

TEST_F(PatternFile, HoldsWhatWasMade) {
    const auto read = StarPatterns::open(file_, kId);
    ASSERT_EQ(read->stars().size(), made_->stars().size());
    EXPECT_EQ(read->patternCount(), made_->patternCount());
    EXPECT_GT(made_->patternCount(), 1500U);
    EXPECT_EQ(read->highestDensity(), made_->highestDensity());
    for (std::size_t i = 0; i < read->stars().size(); ++i) {
        EXPECT_EQ(read->stars()[i].at, made_->stars()[i].at);
        EXPECT_EQ(read->stars()[i].brighter, made_->stars()[i].brighter);
    }
}

TEST_F(PatternFile, IsRefusedWhenItIsNotAsItWasWritten) {
    const std::string whole = test::contentsOf(file_);
    const struct {
        const char* why;
        std::size_t size;   ///< of the file
        std::size_t where;  ///< a byte that changes, or past the end
        const char* says;
    } cases[] = {
        {"empty", 0, whole.size(), "holds no star patterns"},
        {"cut within the head", 20, whole.size(), "holds no star patterns"},
        {"cut within the tables", whole.size() / 2, whole.size(), "wrong size"},
        {"one byte short", whole.size() - 1, whole.size(), "wrong size"},
        {"another kind of file", whole.size(), 0, "holds no star patterns"},
        {"another byte order", whole.size(), 8, "another version or machine"},
        {"another version", whole.size(), 12, "another version or machine"},
        {"another count of stars", whole.size(), 20, "wrong size"},
        {"a star's place", whole.size(), 60, "check sum"},
        {"the end", whole.size(), whole.size() - 1, "check sum"},
    };
    for (const auto& c : cases) {
        std::string bytes = whole.substr(0, c.size);
        if (c.where < bytes.size()) bytes[c.where] = static_cast<char>(bytes[c.where] ^ 0x10);
        test::writeFile(file_, bytes);
        EXPECT_NE(reasonOf().find(c.says), std::string::npos) << c.why << ": " << reasonOf();
    }
    test::writeFile(file_, whole);
    EXPECT_EQ(reasonOf(), "");
    EXPECT_NE(reasonOf(kId + 1).find("another star catalogue"), std::string::npos);
    std::filesystem::remove(file_);
    EXPECT_NE(reasonOf().find("can't be read"), std::string::npos);
}

TEST(PatternStore, MakesOnceAndMendsWhatIsDamaged) {
    const test::TempFolder folder;
    std::vector<sky::MovingStar> stars;
    for (const CatalogStar& s : randomStars(200, 8))
        stars.push_back({s.raDeg, s.decDeg, s.magnitude + 1, 0, 0});
    sky::writeCompactCatalog(folder / sky::kTychoFileName, stars, 2026);
    const sky::CompactCatalog catalog(folder / sky::kTychoFileName);
    const auto cache = folder / "deep/cache";
    std::vector<std::string> told;
    const auto patterns = [&](const std::filesystem::path& place) {
        told.clear();
        return patternsOf(catalog, place, [&](const std::string& line) { told.push_back(line); });
    };
    const auto made = patterns(cache);
    EXPECT_EQ(told.size(), 1U) << "the making";
    EXPECT_EQ(patterns(cache)->patternCount(), made->patternCount());
    EXPECT_TRUE(told.empty()) << told[0];

    std::filesystem::resize_file(cache / kPatternFileName, 1000);
    EXPECT_EQ(patterns(cache)->patternCount(), made->patternCount());
    ASSERT_EQ(told.size(), 2U);
    EXPECT_NE(told[0].find("damaged"), std::string::npos) << told[0];
    patterns(cache);
    EXPECT_TRUE(told.empty()) << "mended";

    folder.write("file", "in the way");
    EXPECT_EQ(patterns(folder / "file/cache")->patternCount(), made->patternCount());
    ASSERT_EQ(told.size(), 2U);
    EXPECT_NE(told[1].find("can't be written"), std::string::npos) << told[1];
    EXPECT_EQ(patterns({})->patternCount(), made->patternCount()) << "without a cache";

    std::filesystem::rename(cache / kPatternFileName, folder / kPatternFileName);
    patterns({});
    EXPECT_TRUE(told.empty()) << "installed beside the catalogue";
}

}  // namespace
}  // namespace vantrel::solver
