#include "sky/compact_catalog.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "sky/named_objects.h"
#include "sky/tangent_wcs.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::sky {
namespace {

const CompactCatalog& builtIn() {
    static const auto catalog = CompactCatalog::openBuiltIn();
    return *catalog;
}

std::string builtInBytes() { return test::contentsOf(builtIn().folder() / kTychoFileName); }

// Places from SIMBAD (ICRS, epoch 2000.0; Hipparcos and Gaia), the 1950 place of Barnard's star by its proper
// motion there (-798.6, +10328.1 mas/yr; Tycho-2 has 10277). Cells give 0.13" rms; binaries stand to about
// 1".
TEST(CompactCatalog, KnowsStarsAtTheEpochAskedFor) {
    const struct {
        const char* name;
        double ra, dec, magnitude, epoch, arcsec;
    } cases[] = {
        {"Sirius", 101.287155, -16.716116, -1.46, 2000, 1.0},
        {"Vega", 279.234735, 38.783689, 0.03, 2000, 0.5},
        {"Arcturus, 2.3 arcsec a year", 213.915300, 19.182409, -0.05, 2000, 1.0},
        {"Polaris, less than a degree from the pole", 37.954561, 89.264109, 1.98, 2000, 1.5},
        {"61 Cygni A, left out by poorer copies", 316.724748, 38.749416, 5.21, 2000, 1.0},
        {"Barnard's star", 269.452077, 4.693365, 9.51, 2000, 1.0},
        {"Barnard's star half a century before", 269.463207, 4.549443, 9.51, 1950, 5.0},
    };
    for (const auto& c : cases) {
        const auto stars = builtIn().cone({.raDeg = c.ra,
                                           .decDeg = c.dec,
                                           .radiusDeg = 0.02,
                                           .epochYear = c.epoch,
                                           .brightestFirst = true});
        ASSERT_FALSE(stars.empty()) << c.name;
        EXPECT_LT(separationDeg({stars[0].raDeg, stars[0].decDeg}, {c.ra, c.dec}) * 3600, c.arcsec) << c.name;
        EXPECT_NEAR(stars[0].magnitude, c.magnitude, 0.45) << c.name;
    }
}

// The same circles by a walk over all stars: cell selection at the poles and across 0 hours is what can go
// wrong.
TEST(CompactCatalog, ConeHoldsExactlyTheStarsInside) {
    const auto all = builtIn().cone({.raDeg = 0, .decDeg = 0, .radiusDeg = 180});
    EXPECT_EQ(all.size(), 2550960U);
    EXPECT_EQ(builtIn().starCount(), 2550960U);
    const struct {
        double ra, dec, radius;
    } cases[] = {{0.1, 0, 1.5},   {359.9, 45, 2},   {720.3, -30, 1}, {80, 90, 1},
                 {200, -89.5, 2}, {123, 89.2, 0.8}, {10, 60, 31},    {-170, -20, 0.3}};
    for (const auto& c : cases) {
        const auto inside = std::count_if(all.begin(), all.end(), [&](const CatalogStar& s) {
            return separationDeg({s.raDeg, s.decDeg}, {c.ra, c.dec}) <= c.radius;
        });
        const auto found = builtIn().cone({.raDeg = c.ra, .decDeg = c.dec, .radiusDeg = c.radius});
        EXPECT_NEAR(static_cast<double>(found.size()), static_cast<double>(inside), 1)
            << c.ra << " " << c.dec;
        EXPECT_GT(inside, 0);
    }
}

TEST(CompactCatalog, LimitsByCountAndMagnitude) {
    const ConeQuery cone{.raDeg = 300, .decDeg = 35, .radiusDeg = 3};
    auto all = builtIn().cone(cone);
    std::sort(all.begin(), all.end(), [](auto& a, auto& b) { return a.magnitude < b.magnitude; });
    for (const std::size_t count : {1U, 10U, 500U, 1000000U}) {
        ConeQuery query = cone;
        query.maxStars = count;
        const auto some = builtIn().cone(query);
        ASSERT_EQ(some.size(), std::min<std::size_t>(count, all.size()));
        for (std::size_t i = 0; i < some.size(); ++i) ASSERT_EQ(some[i].magnitude, all[i].magnitude) << i;
    }
    ConeQuery query = cone;
    query.brightestMagnitude = 7;
    query.faintestMagnitude = 9;
    const auto middle = builtIn().cone(query);
    EXPECT_EQ(middle.size(), static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [](auto& s) {
                  return s.magnitude >= 7 && s.magnitude <= 9;
              })));
    query.faintestMagnitude = -30;
    EXPECT_TRUE(builtIn().cone(query).empty());
}

TEST(CompactCatalog, ChecksumTellsASingleChangedBit) {
    EXPECT_TRUE(builtIn().verify());
    std::string bytes = builtInBytes();
    bytes[5000000] = static_cast<char>(bytes[5000000] ^ 1);
    const test::TempFolder folder;
    EXPECT_FALSE(CompactCatalog(folder.write("bit.bin", bytes)).verify());
    const char digits[] = "123456789";  // the customary check value of this CRC is CBF43926
    EXPECT_EQ(crc32(std::as_bytes(std::span(digits, 9))), 0xCBF43926U);
}

TEST(CompactCatalog, RefusesDamagedFilesInOneLine) {
    const std::string good = builtInBytes();
    const auto changed = [&](std::size_t at, std::uint32_t value) {
        std::string bytes = good;
        std::memcpy(bytes.data() + at, &value, sizeof value);
        return bytes;
    };
    const struct {
        const char* why;
        std::string bytes;
        const char* text;
    } cases[] = {
        {"empty", "", "not a compact star catalogue"},
        {"other content", std::string(100000, 'x'), "not a compact star catalogue"},
        {"later version", changed(8, 2), "not a compact star catalogue"},
        {"cut short", good.substr(0, good.size() - 1), "its header and its size disagree"},
        {"star count", changed(12, 0xFFFFFFFF), "its header and its size disagree"},
        {"band count", changed(20, 0), "its header and its size disagree"},
        {"cells of a band", changed(64, 0xFFFFFFFF), "its tables disagree"},
        {"stars of a cell", changed(64 + 720 + 1000, 0xFFFFFFFF), "its tables disagree"},
        {"gap code", changed(good.size() - 4 * 168381 - 5000, 0xFFFFFFFF), "its tables disagree"},
    };
    const test::TempFolder folder;
    for (const auto& c : cases) {
        const std::string says =
            test::refusalOf<CatalogError>([&] { CompactCatalog(folder.write("damaged.bin", c.bytes)); });
        EXPECT_NE(says.find(c.text), std::string::npos) << c.why << ": " << says;
    }
    EXPECT_THROW(CompactCatalog{folder.path()}, CatalogError);
    EXPECT_THROW(CompactCatalog{folder / "missing.bin"}, CatalogError);
}

// ---- named objects

// A slip in a place would put a name beside nothing.
TEST(NamedStars, StandOnBrightStars) {
    std::set<std::string> names;
    for (const NamedStar& star : namedStars()) {
        EXPECT_TRUE(names.insert(star.name).second) << star.name;
        const bool varies = std::string(star.name) == "Mira";
        EXPECT_FALSE(builtIn()
                         .cone({.raDeg = star.place.ra,
                                .decDeg = star.place.dec,
                                .radiusDeg = 0.003,
                                .faintestMagnitude = varies ? 10 : 4.2})
                         .empty())
            << star.name;
    }
}

TEST(DeepSkyObjects, AreAllOfMessiersAndMore) {
    const auto objects = deepSkyObjects();
    ASSERT_GT(objects.size(), 120U);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (i < 110) {
            EXPECT_EQ(objects[i].name, "M " + std::to_string(i + 1));
        }
        EXPECT_TRUE(objects[i].sizeArcmin >= 1 && objects[i].sizeArcmin < 700) << objects[i].name;
        EXPECT_TRUE(objects[i].place.ra >= 0 && objects[i].place.ra < 360) << objects[i].name;
    }
}

}  // namespace
}  // namespace vantrel::sky
