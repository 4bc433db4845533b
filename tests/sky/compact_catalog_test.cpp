#include "sky/compact_catalog.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "sky/named_objects.h"
#include "sky/tangent_wcs.h"
#include "sky/tycho_distribution.h"
#include "support/catalog_trees.h"
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

// ---- from the distribution

using test::columns;

std::string mean(const char* flag, const std::string& ra, const std::string& dec, const std::string& pmRa,
                 const std::string& pmDec, const std::string& bt, const std::string& vt) {
    return columns(
               206,
               {{14, flag}, {16, ra}, {29, dec}, {42, pmRa}, {50, pmDec}, {111, bt}, {117, "|"}, {124, vt}}) +
           "\n";
}

TEST(TychoDistribution, BecomesACatalogueThatReadsBackTheSame) {
    const test::TempFolder folder;
    const std::string twin =
        mean("P", "359.99999000", "-89.90000000", "    0.0", "    0.0", "10.000", "10.000");
    // Some strip the blanks from the ends of lines, and end these as other systems do.
    for (const auto& [file, end] : {std::pair{"tyc2.dat.00", "\n"}, {"tyc2.dat.02", "\r\n"}}) {
        const std::string ra = end[0] == '\n' ? " 10.00000000" : " 30.00000000";
        folder.write(file,
                     columns(127, {{16, ra}, {29, " 20.00000000"}, {111, " 9.10"}, {124, "8.15"}}) + end);
    }
    folder.write("tyc2.dat.03", twin + twin);
    folder.write(
        "tyc2.dat.01",
        mean(" ", " 10.00010000", " 20.20000000", " -800.0", "10300.0", "      ", "11.000") +
            columns(
                206,
                {{14, "X"}, {111, "12.000"}, {124, "11.500"}, {153, "100.50000000"}, {166, " -0.00010000"}}) +
            "\n");
    folder.write("suppl_1.dat", columns(122, {{14, "H"},
                                              {16, "200.00000000"},
                                              {29, "+89.50000000"},
                                              {42, "  100.0"},
                                              {50, "   80.0"},
                                              {82, "H"},
                                              {97, " 5.000"}}) +
                                    "\n");
    auto stars = readTychoDistribution(folder.path(), 2026);
    ASSERT_EQ(stars.size(), 6U);
    writeCompactCatalog(folder / kTychoFileName, stars, 2026);

    const CompactCatalog catalog(folder / kTychoFileName);
    EXPECT_TRUE(catalog.verify());
    // Magnitudes: V = VT - 0.09 (BT - VT); two of 10.0 make 9.247.
    const struct {
        const char* why;
        double ra, dec, magnitude, epoch;
    } cases[] = {
        {"plain star", 10, 20, 8.0645, 2000},
        {"another one", 30, 20, 8.0645, 2000},
        {"twins at the pole", 359.99999, -89.9, 9.247, 2000},
        {"fast star in 2000", 10.0001, 20.2, 11, 2000},
        {"fast star in 1950", 10.0001 + 800.0 * 50 / 3.6e6 / 0.93849, 20.2 - 10300.0 * 50 / 3.6e6, 11, 1950},
        {"observed position only", 100.5, -0.0001, 11.455, 2000},
        {"supplement, whose positions stand at 1991.25", 200, 89.5, 5, 1991.25},
    };
    for (const auto& c : cases) {
        const auto found =
            catalog.cone({.raDeg = c.ra, .decDeg = c.dec, .radiusDeg = 1.0 / 3600, .epochYear = c.epoch});
        ASSERT_EQ(found.size(), 1U) << c.why;
        EXPECT_NEAR(found[0].magnitude, c.magnitude, 0.032) << c.why;
    }
}

TEST(TychoDistribution, CodesGapsOfEveryLength) {
    const test::TempFolder folder;
    for (const std::size_t still : {0U, 1U, 253U, 254U, 255U, 256U, 600U}) {
        std::vector<MovingStar> stars;
        for (std::size_t i = 0; i <= still; ++i) stars.push_back({0.3 * static_cast<double>(i), 0, 10, 0, 0});
        stars.back().motionRaMas = 1000;
        writeCompactCatalog(folder / "gaps.bin", stars, 2026);
        const CompactCatalog catalog(folder / "gaps.bin");
        const double moved = stars.back().raDeg + 36 * 1000 / 3.6e6;
        EXPECT_EQ(
            catalog.cone({.raDeg = moved, .decDeg = 0, .radiusDeg = 0.5 / 3600, .epochYear = 2062}).size(),
            1U)
            << still;
    }
}

TEST(TychoDistribution, RefusesWhatIsNone) {
    const test::TempFolder folder;
    EXPECT_THROW(readTychoDistribution(folder.path(), 2026), CatalogError);
    folder.write("catalog.dat", mean(" ", "  not a place", " 20.0", "", "", "9.1", "8.1"));
    const std::string says =
        test::refusalOf<CatalogError>([&] { readTychoDistribution(folder.path(), 2026); });
    EXPECT_NE(says.find("catalog.dat: line 1"), std::string::npos) << says;
    EXPECT_THROW(writeCompactCatalog(folder / "none" / "x.bin", {}, 2026), CatalogError);
    EXPECT_THROW(
        writeCompactCatalog(folder / "x.bin", std::vector<MovingStar>(256, MovingStar{1, 1, 9}), 2026),
        CatalogError);
}

}  // namespace
}  // namespace vantrel::sky
