// The patterns of small skies that are known star by star, and the files that keep them.

#include "solver/star_patterns.h"

#include <random>

#include <gtest/gtest.h>

#include "sky/tangent_wcs.h"
#include "sky/tycho_distribution.h"
#include "solver/pattern_store.h"
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

// Against looking through all stars, which needs no tree.
TEST(StarPatterns, JoinEachStarWithTheNearestThatOutshineIt) {
    const auto patterns = StarPatterns::build(test::ListCatalog(randomStars(600, 5)), kId, 100);
    const auto stars = patterns->stars();
    ASSERT_EQ(stars.size(), 600U);
    for (std::uint32_t i = 0; i < stars.size(); ++i) {
        std::vector<std::pair<double, std::uint32_t>> brighter;
        for (std::uint32_t k = 0; k < stars.size(); ++k) {
            if (stars[k].tenths < stars[i].tenths)
                brighter.emplace_back(separation(patterns->directionOf(i), patterns->directionOf(k)), k);
        }
        if (brighter.empty()) continue;
        std::sort(brighter.begin(), brighter.end());
        // Stars of the same tenth of a magnitude may stand on either side of the order.
        const double farthest = brighter[std::min<std::size_t>(3, brighter.size() - 1)].first;
        for (const std::uint32_t neighbour : stars[i].brighter) {
            if (neighbour == PatternStar::kNone) continue;
            EXPECT_LE(stars[neighbour].tenths, stars[i].tenths);
            EXPECT_LE(separation(patterns->directionOf(i), patterns->directionOf(neighbour)),
                      brighter.size() < 4 ? 180 : farthest + 1e-4);
        }
    }
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
