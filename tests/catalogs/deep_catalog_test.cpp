#include "catalogs/deep_catalog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogs/star_table.h"
#include "sky/compact_catalog.h"
#include "sky/tangent_wcs.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::catalogs {
namespace {

using sky::CatalogError;
using sky::MovingStar;

namespace fs = std::filesystem;

bool always(double /*share*/) { return true; }

DeepResult write(const fs::path& file, const std::vector<MovingStar>& stars, const DeepSelection& selection) {
    return writeDeepCatalog(file, stripsOf(stars, selection), selection, always);
}

TEST(DeepCatalog, KeepsTheBrightestOfAFullCellAndWhatIsWithinTheLimits) {
    std::vector<MovingStar> stars;
    for (int i = 0; i < 300; ++i) stars.push_back({100.05, 20.05, 18 - 0.01 * i});
    stars.push_back({10, -35, 12});
    stars.push_back({10, 90, 12.5});
    stars.push_back({10, 20.5, 22});
    const test::TempFolder folder{test::TempFolder::quickPlace()};
    const struct {
        const char* why;
        DeepSelection selection;
        std::uint64_t stars, leftOut;
    } rows[] = {
        {"a cell's room", {}, 258, 45},
        {"a limit of stars", {.mostInCell = 10}, 13, 290},
        {"a band", {.southDeg = 0, .northDeg = 45}, 256, 45},
        {"a pole", {.southDeg = 89, .northDeg = 90}, 1, 0},
        {"a magnitude", {.faintestMagnitude = 15.505}, 52, 0},
    };
    for (const auto& row : rows) {
        const auto made = write(folder / "deep.bin", stars, row.selection);
        EXPECT_EQ(made.stars, row.stars) << row.why;
        EXPECT_EQ(made.leftOut, row.leftOut) << row.why;
    }
    write(folder / "deep.bin", stars, {.mostInCell = 10});
    const auto kept = sky::CompactCatalog(folder / "deep.bin")
                          .cone({.raDeg = 100.05, .decDeg = 20.05, .radiusDeg = 0.1, .brightestFirst = true});
    EXPECT_NEAR(kept.back().magnitude, 15.1, 0.051);
}

// The file that was there stays, and nothing else comes to stand beside it.
TEST(DeepCatalog, IsWrittenAsAWholeOrNotAtAll) {
    const test::TempFolder folder{test::TempFolder::quickPlace()};
    const DeepSelection all;
    const std::vector<MovingStar> stars = {{1, 1, 9}, {2, 50, 9}};
    write(folder / "deep.bin", stars, all);
    const std::string before = test::contentsOf(folder / "deep.bin");
    const StripSource fails = [](double south, double) -> std::vector<MovingStar> {
        if (south > 30) throw CatalogError("the disc was taken out");
        return {{1, 1, 5}};
    };
    const struct {
        const char* says;
        std::function<void()> attempt;
    } rows[] = {
        {"the disc was taken out", [&] { writeDeepCatalog(folder / "deep.bin", fails, all, always); }},
        {"given up",
         [&] {
             writeDeepCatalog(folder / "deep.bin", stripsOf(stars, all), all,
                              [](double d) { return d < 0.7; });
         }},
        {"no star was found", [&] { write(folder / "deep.bin", {}, all); }},
        {"can't be written", [&] { write(folder / "no folder" / "deep.bin", stars, all); }},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(test::refusalOf<CatalogError>(row.attempt), testing::HasSubstr(row.says));
        EXPECT_EQ(test::contentsOf(folder / "deep.bin"), before) << row.says;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << row.says;
    }
}

// Each table has the star of 10.5 degrees, -20.25 degrees, magnitude 12.5, 100 and -200 mas a year.
TEST(StarTable, IsReadInTheFormsThatTablesHave) {
    const struct {
        const char* why;
        const char* text;
        std::size_t stars;
        std::uint64_t incomplete;
    } rows[] = {
        {"as VizieR saves it",
         "#\n#   VizieR Astronomical Server\n#Column\tRAJ2000\t(F11.7)\n\n"
         "RAJ2000\tDEJ2000\tpmRA\tpmDE\tVmag\ndeg\tdeg\tmas/yr\tmas/yr\tmag\n"
         "-----------\t-----------\t------\t------\t------\n"
         " 10.5000000\t-20.2500000\t 100.0\t-200.0\t12.500\n 11.0000000\t-20.0000000\t      \t      \t      "
         "\n"
         "\n#END#\n",
         1, 1},
        {"as Gaia's archive gives it",
         "source_id,ra,dec,phot_g_mean_mag,pmra,pmdec\r\n1,10.5,-20.25,12.5,100,-200\r\n2,11,-20,9,,\r\n", 2,
         0},
        {"with a mark, quotes and no end",
         "\xEF\xBB\xBF\"name\";\"RA\";\"Dec\";\"Mag\";pmRA;pmDE\n\"a;b\";\"10.5\";-20.25;\"+12.5\";100;-2e2",
         1, 0},
        {"dashes below the names",
         "ra\tdec\tmag\tpmra\tpmdec\n--\t---\t---\t---\t---\n10.5\t-20.25\t12.5\t100\t-200\n", 1, 0},
    };
    const test::TempFolder folder{test::TempFolder::quickPlace()};
    for (const auto& row : rows) {
        const StarTable table = readStarTable(folder.write("table", row.text), {}, 2000, 2036);
        ASSERT_EQ(table.stars.size(), row.stars) << row.why;
        EXPECT_EQ(table.incomplete, row.incomplete) << row.why;
        EXPECT_TRUE(table.moves) << row.why;
        const MovingStar& star = table.stars[0];
        EXPECT_NEAR(star.raDeg, 10.5 + 0.001 / 0.93819, 1e-8) << row.why;  // 3.6" by cos 20.25
        EXPECT_NEAR(star.decDeg, -20.252, 1e-9) << row.why;
        EXPECT_EQ(star.magnitude, 12.5) << row.why;
    }
    const StarTable named = readStarTable(folder.write("table", "ra,dec,mag,x,y,z\n1,2,3,10.5,-20.25,12.5\n"),
                                          {.ra = "X", .dec = "y", .magnitude = "z"}, 2000, 2000);
    EXPECT_EQ(named.stars.at(0).raDeg, 10.5);
    EXPECT_FALSE(named.moves);
}

TEST(StarTable, TellsTheLineThatItCantRead) {
    const struct {
        const char* why;
        std::string text;
        const char* says;
    } rows[] = {
        {"empty", "", "holds no table"},
        {"comments only", "# nothing\n\n", "holds no table"},
        {"one column", "stars\n1\n", "line 1: holds no names"},
        {"a picture", std::string("SIMPLE\0,x", 9), "line 1: holds no names"},
        {"no magnitudes", "ra,dec,colour\n1,2,3\n", "no column of magnitudes"},
        {"cut short", "ra,dec,mag\n1,2,3\n4,5", "line 3: has 2 fields where the heading has 3"},
        {"hours", "ra,dec,mag\n1,2,3\n05 34 31.9,22,9\n",
         "line 3: \"05 34 31.9\" can't stand in the column ra"},
        {"beyond the pole", "ra,dec,mag\n1,91,3\n", "line 2: \"91\" can't stand in the column dec"},
        {"no number", "ra,dec,mag\n1,2,3\n1,2,nan\n", "\"nan\" can't stand"},
        {"units without dashes", "ra\tdec\tmag\ndeg\tdeg\tmag\n1\t2\t3\n",
         "line 3: isn't the line of dashes"},
    };
    const test::TempFolder folder{test::TempFolder::quickPlace()};
    for (const auto& row : rows) {
        const auto file = folder.write("table", row.text);
        EXPECT_THAT(test::refusalOf<CatalogError>([&] { readStarTable(file, {}, 2000, 2026); }),
                    testing::HasSubstr(row.says))
            << row.why;
    }
    const auto file = folder.write("table", "ra,dec,mag\n1,2,3\n");
    EXPECT_THAT(test::refusalOf<CatalogError>([&] { readStarTable(file, {.motionRa = "mu"}, 2000, 2026); }),
                testing::HasSubstr("(mu); there are: ra, dec, mag"));
    EXPECT_THROW(readStarTable(folder / "missing", {}, 2000, 2026), CatalogError);
}

}  // namespace
}  // namespace vantrel::catalogs
