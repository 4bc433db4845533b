#include "catalogs/distributions.h"

#include <cerrno>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogs/catalog_file.h"
#include "catalogs/deep_catalog.h"
#include "catalogs/star_table.h"
#include "platform/text.h"
#include "sky/compact_catalog.h"
#include "sky/tangent_wcs.h"
#include "support/catalog_trees.h"
#include "support/refusal.h"
#include "support/temp_folder.h"

namespace vantrel::catalogs {
namespace {

using sky::CatalogError;
using sky::CatalogStar;
using sky::ConeQuery;
using sky::SkyPosition;

namespace fs = std::filesystem;
using sky::MovingStar;
using test::TreeStar;
using test::TreeStars;

/// One kind of catalogue: how to write it, how to open it, and how well it keeps places and magnitudes.
struct Kind {
    const char* name;
    void (*write)(const fs::path& root, const TreeStars& stars);
    FoundCatalog (*open)(const CatalogFolder& folder);
    bool moves;
    double placeDeg = 1e-5;
    double northernEnd = 90;
};

const Kind kKinds[] = {
    {"GscOnDisc", [](auto& root, auto& stars) { test::writeGuideStars(root, stars, true); }, openGuideStars,
     false},
    {"GscInZones", [](auto& root, auto& stars) { test::writeGuideStars(root, stars, false); }, openGuideStars,
     false},
    {"UsnoA", [](auto& root, auto& stars) { test::writeUsnoA(root, stars); }, openUsnoA, false},
    {"UsnoAOnDiscs", [](auto& root, auto& stars) { test::writeUsnoA(root, stars, true); }, openUsnoA, false},
    {"UsnoB", test::writeUsnoB, openUsnoB, true},
    {"Tycho2OnDisc", [](auto& root, auto& stars) { test::writeTycho2(root, stars, true); }, openTycho2, true},
    {"Tycho2InParts", [](auto& root, auto& stars) { test::writeTycho2(root, stars, false); }, openTycho2,
     true},
    {"Ucac2", [](auto& root, auto& stars) { test::writeUcac2(root / "u2", stars); }, openUcac2, true, 1e-5,
     53.9},
    {"Ucac2Zones", test::writeUcac2, openUcac2, true, 1e-5, 53.9},
    {"Ucac4", [](auto& root, auto& stars) { test::writeUcac4(root / "U4B", root / "U4I", stars); }, openUcac4,
     true},
    {"Ucac4Zones", [](auto& root, auto& stars) { test::writeUcac4(root, root, stars); }, openUcac4, true},
    {"Cells290", [](auto& root, auto& stars) { test::writeCells(root, stars, "G17", "290", 5); },
     openCellDatabase, false, 2.5e-5},
    {"Cells1476", [](auto& root, auto& stars) { test::writeCells(root, stars, "d50", "1476", 6); },
     openCellDatabase, false, 2.5e-5},
};

struct Cone {
    const char* why;
    double ra, dec, radius;
};

// Zones of the catalogues end at multiples of 0.1, 0.2, 0.5 and 7.5 degrees; cells at 0, 12.794 and 87.429.
const Cone kCones[] = {
    {"middle of everything", 100.3, -33.21, 0.7},
    {"zero of right ascension, from the west", 359.9, 20.05, 0.8},
    {"zero of right ascension, from the east", 0, -20.05, 0.8},
    {"north pole", 40, 89.9, 0.9},
    {"south pole itself", 0, -90, 1.2},
    {"pole just outside", 200, 88.8, 1.15},
    {"border of zones", 270.0, 15.0, 0.7},
    {"border of southern zones", 90.0, -52.5, 0.7},
    {"border of cells", 180, 87.42857, 0.7},
    {"equator", 180, 0, 1.5},
    {"tiny", 100.3, -33.21, 0.02},
    {"wide", 100.3, -33.21, 12},
};

/// Stars of magnitudes 6.0 to 16.0 all over the sky and more of them around the cones' centres. Those near a
/// pole stand still.
TreeStars someStars() {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> unit(0, 1);
    TreeStars stars;
    const auto add = [&](double ra, double dec) {
        TreeStar star{std::round(ra * 1e5) / 1e5, std::round(dec * 1e5) / 1e5,
                      std::round(60 + 100 * unit(random)) / 10};
        if (star.ra >= 360) star.ra -= 360;
        if (std::abs(star.dec) < 85) {
            star.pmRa = 2 * std::round(200 * (unit(random) - 0.5));
            star.pmDec = 2 * std::round(200 * (unit(random) - 0.5));
        }
        stars.push_back(star);
    };
    for (int i = 0; i < 2000; ++i)
        add(360 * unit(random), std::asin(2 * unit(random) - 1) * 180 / std::numbers::pi);
    for (const Cone& cone : kCones) {
        const double reach = std::min(cone.radius * 1.3, 2.0);
        for (int i = 0; i < 60; ++i) {
            const auto place = sky::fromTangentPlane(
                {reach * (2 * unit(random) - 1), reach * (2 * unit(random) - 1)}, {cone.ra, cone.dec});
            add(place.ra, place.dec);
        }
    }
    return stars;
}

/// The star's direction after so many years of straight motion through space, and back to the sky.
SkyPosition moved(const TreeStar& star, double years) {
    constexpr double kMas = std::numbers::pi / 648'000'000;
    const double a = star.ra * std::numbers::pi / 180;
    const double d = star.dec * std::numbers::pi / 180;
    const double east = star.pmRa * years * kMas;
    const double north = star.pmDec * years * kMas;
    const double x = std::cos(d) * std::cos(a) - east * std::sin(a) - north * std::sin(d) * std::cos(a);
    const double y = std::cos(d) * std::sin(a) + east * std::cos(a) - north * std::sin(d) * std::sin(a);
    const double z = std::sin(d) + north * std::cos(d);
    return {std::atan2(y, x) * 180 / std::numbers::pi,
            std::atan2(z, std::hypot(x, y)) * 180 / std::numbers::pi};
}

/// What the search gave beside what it should: one line for each star too many or too few. Stars on the very
/// edge may be in or out.
std::vector<std::string> differences(const Kind& kind, const TreeStars& all, const ConeQuery& query,
                                     std::vector<CatalogStar> found) {
    std::vector<std::string> wrong;
    const SkyPosition centre{query.raDeg, query.decDeg};
    for (const TreeStar& star : all) {
        if (star.magnitude < query.brightestMagnitude || star.magnitude > query.faintestMagnitude) continue;
        if (star.dec > kind.northernEnd) continue;
        const SkyPosition place = moved(star, kind.moves ? query.epochYear - 2000 : 0);
        const double distance = sky::separationDeg(place, centre);
        if (distance > query.radiusDeg + kind.placeDeg) continue;
        const auto match = std::find_if(found.begin(), found.end(), [&](const CatalogStar& candidate) {
            return std::abs(candidate.magnitude - star.magnitude) < 0.001 &&
                   sky::separationDeg({candidate.raDeg, candidate.decDeg}, place) < kind.placeDeg;
        });
        if (match != found.end()) {
            found.erase(match);
        } else if (distance < query.radiusDeg - kind.placeDeg) {
            wrong.push_back(test::formatted("missing: %.5f %.5f %.1f", place.ra, place.dec, star.magnitude));
        }
    }
    for (const CatalogStar& star : found)
        wrong.push_back(test::formatted("too many: %.5f %.5f %.1f", star.raDeg, star.decDeg, star.magnitude));
    return wrong;
}

class Distribution : public testing::TestWithParam<Kind> {
  protected:
    /// The catalogue of these stars, written to the folder.
    FoundCatalog written(const TreeStars& stars) {
        GetParam().write(folder_.path(), stars);
        auto catalog = GetParam().open(CatalogFolder(folder_.path()));
        if (catalog == nullptr) throw CatalogError("not found");
        return catalog;
    }

    test::TempFolder folder_{test::TempFolder::quickPlace()};
};

TEST_P(Distribution, GivesTheStarsThatALookAtAllOfThemGives) {
    const TreeStars stars = someStars();
    const auto catalog = written(stars);
    EXPECT_EQ(catalog->folder(), folder_.path());
    std::size_t seen = 0;
    for (const Cone& cone : kCones) {
        for (const double epoch : {2000.0, 2026.5}) {
            const ConeQuery query{
                .raDeg = cone.ra, .decDeg = cone.dec, .radiusDeg = cone.radius, .epochYear = epoch};
            const auto found = catalog->cone(query);
            seen += found.size();
            EXPECT_THAT(differences(GetParam(), stars, query, found), testing::IsEmpty())
                << cone.why << " in " << epoch;
        }
    }
    EXPECT_GT(seen, 500U);

    ConeQuery query{.raDeg = 100.3,
                    .decDeg = -33.21,
                    .radiusDeg = 12,
                    .brightestMagnitude = 8,
                    .faintestMagnitude = 12,
                    .brightestFirst = true};
    const auto found = catalog->cone(query);
    EXPECT_THAT(differences(GetParam(), stars, query, found), testing::IsEmpty()) << "limited magnitudes";
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end(),
                               [](const auto& a, const auto& b) { return a.magnitude < b.magnitude; }));
    query.maxStars = 10;
    const auto few = catalog->cone(query);
    ASSERT_EQ(few.size(), 10U);
    EXPECT_EQ(few.back().magnitude, found[9].magnitude);
    EXPECT_THAT(catalog->cone({.raDeg = 0, .decDeg = 91, .radiusDeg = 1}), testing::IsEmpty());
}

TEST_P(Distribution, FollowsTheFastestStarOutOfItsZone) {
    if (!GetParam().moves) return;
    // As fast as Barnard's star, northwards; on the border of all catalogues' zones.
    const TreeStar star{250, -7.5001, 9.5, -800, 9900};
    const auto catalog = written({star});
    const auto seenAt = [&](SkyPosition place, double year) {
        return catalog->cone({.raDeg = place.ra, .decDeg = place.dec, .radiusDeg = 1e-3, .epochYear = year});
    };
    EXPECT_EQ(seenAt(moved(star, 60), 2060).size(), 1U);
    EXPECT_EQ(seenAt({star.ra, star.dec}, 2060).size(), 0U);
    EXPECT_EQ(seenAt({star.ra, star.dec}, 2000).size(), 1U);
}

// The search says which file it is, or gives what is still there.
TEST_P(Distribution, NamesTheFileThatIsCutShort) {
    const TreeStars stars = {{100.3, -33.21, 9.5}, {100.31, -33.22, 10.5}, {100.32, -33.23, 11.5}};
    const ConeQuery query{.raDeg = 100.3, .decDeg = -33.21, .radiusDeg = 0.5};
    ASSERT_EQ(written(stars)->cone(query).size(), 3U);
    // The largest files are those that hold the stars and the indices that are needed.
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path()))
        if (entry.is_regular_file() && platform::toLower(entry.path().extension().string()) != ".acc")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end(),
              [](const auto& a, const auto& b) { return fs::file_size(a) > fs::file_size(b); });
    files.resize(3);
    std::size_t refused = 0;
    for (const fs::path& file : files) {
        const std::string bytes = test::contentsOf(file);
        if (bytes.empty()) continue;
        for (const std::size_t length : {bytes.size() - 1, bytes.size() / 2 + 1}) {
            test::writeFile(file, bytes.substr(0, length));
            const std::string says = test::refusalOf<CatalogError>(
                [&] { GetParam().open(CatalogFolder(folder_.path()))->cone(query); });
            if (says.empty()) continue;
            ++refused;
            EXPECT_THAT(says, testing::HasSubstr(file.filename().string()));
        }
        test::writeFile(file, bytes);
    }
    EXPECT_GT(refused, 0U);
}

TEST(ZoneCatalog, NoticesAZoneThatIsCutBetweenRecords) {
    TreeStars stars;
    for (int i = 0; i < 2000; ++i) stars.push_back({0.18 * i, -33.21, 12});
    const test::TempFolder folder{test::TempFolder::quickPlace()};
    test::writeUcac4(folder.path(), folder.path(), stars);
    const auto found = [&] {
        return openUcac4(CatalogFolder(folder.path()))
            ->cone({.raDeg = 100.8, .decDeg = -33.21, .radiusDeg = 0.1});
    };
    EXPECT_EQ(found().size(), 1U);
    fs::resize_file(folder / "z284", 1000 * 78);
    EXPECT_THROW(found(), CatalogError);
}

TEST(CatalogFiles, AreFoundByNameAndRefusedWhenTheyAreNone) {
    const test::TempFolder place;
    place.write("Index.DAT;1", "123");
    place.write("Zones.dat/z001", "");
    const CatalogFolder folder(place.path());
    EXPECT_EQ(folder.file("index.dat"), place / "Index.DAT;1");
    for (const char* none : {"zones.dat", "missing.dat"}) EXPECT_EQ(folder.file(none), std::nullopt) << none;
    for (const char* none : {"index.dat", "missing.dat"}) EXPECT_FALSE(folder.folder(none)) << none;
    EXPECT_EQ(folder.withSubfolders().size(), 2U);
    EXPECT_EQ(folder.folder("zones.dat")->entries().size(), 1U);

    const CatalogFile file(*folder.file("index.dat"));
    EXPECT_EQ(file.text(1, 2), "23");
    for (const auto& [at, length] : {std::pair{0, 4}, {3, 1}, {4, 0}, {1, 3}})
        EXPECT_THROW(file.text(static_cast<std::uint64_t>(at), static_cast<std::size_t>(length)),
                     CatalogError);
    errno = EINTR;  // of another call
    unsigned char four[4];
    EXPECT_THROW(file.read(0, four), CatalogError);
    for (const char* none : {"Zones.dat", "missing.dat"})
        EXPECT_THROW(CatalogFile(place / none), CatalogError);
}

INSTANTIATE_TEST_SUITE_P(Catalogs, Distribution, testing::ValuesIn(kKinds),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- catalogues of one's own

bool always(double /*share*/) { return true; }

DeepResult write(const fs::path& file, const std::vector<MovingStar>& stars, const DeepSelection& selection) {
    return writeDeepCatalog(file, stripsOf(stars, selection), selection, always);
}

TEST(DeepCatalog, KeepsTheBrightestOfAFullCellAndWhatIsWithinTheLimits) {
    std::vector<MovingStar> stars(300);
    for (int i = 0; i < 300; ++i) stars[static_cast<std::size_t>(i)] = {100.05, 20.05, 18 - 0.01 * i};
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

// At a pole and where the zero of right ascension and zones meet; the stars are followed for decades more.
TEST(DeepCatalog, TakesTheStarsOfADistribution) {
    const test::TempFolder folder{test::TempFolder::quickPlace()};
    const TreeStars stars = {
        {0.01, -7.4999, 9.5, 300, -200}, {359.99, -7.5001, 10.5, -300, 200}, {250, -89.5, 11}};
    test::writeUcac4(folder.path(), folder.path(), stars);
    const auto catalog = openUcac4(CatalogFolder(folder.path()));
    for (const auto& [south, north, count] : {std::tuple{-90.0, -89.0, 1U}, {-8.0, -7.0, 2U}}) {
        const DeepSelection selection{.epochYear = 2026.5, .southDeg = south, .northDeg = north};
        const auto made =
            writeDeepCatalog(folder / "deep.bin", stripsOf(*catalog, selection), selection, always);
        EXPECT_EQ(made.stars, count);
        const sky::CompactCatalog compact(folder / "deep.bin");
        EXPECT_TRUE(compact.verify());
        for (const TreeStar& star : stars) {
            const SkyPosition place = moved(star, 60);
            const auto found = compact.cone(
                {.raDeg = place.ra, .decDeg = place.dec, .radiusDeg = 0.2 / 3600, .epochYear = 2060});
            EXPECT_EQ(found.size(), star.dec > south && star.dec < north ? 1U : 0U) << star.ra;
        }
    }
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
