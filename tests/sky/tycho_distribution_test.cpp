#include "sky/tycho_distribution.h"

#include <gtest/gtest.h>

#include "sky/compact_catalog.h"
#include "support/catalog_trees.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::sky {
namespace {

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
