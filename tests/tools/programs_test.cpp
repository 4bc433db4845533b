// The programs vantrel-solve and vantrel-catalog as their callers see them.

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "pictures/picture_file.h"
#include "sky/compact_catalog.h"
#include "sky/vector3.h"
#include "support/catalog_trees.h"
#include "support/deep_sky.h"
#include "support/list_catalog.h"
#include "support/star_field.h"
#include "support/temp_folder.h"

namespace vantrel::tools {
namespace {

struct Answer {
    int status = -1;
    std::string out;
    std::string err;
};

class ProgramTest : public testing::Test {
  protected:
    /// `environment`: "NAME='value' ", in front of the program's name.
    Answer call(const std::string& program, const std::string& arguments,
                const std::string& environment = {}) {
        const std::string command = environment + program + " " + arguments + " > '" +
                                    (folder_ / "out").string() + "' 2> '" + (folder_ / "err").string() + "'";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, test::contentsOf(folder_ / "out"),
                test::contentsOf(folder_ / "err")};
    }

    test::TempFolder folder_{test::TempFolder::quickPlace()};
};

class VantrelSolve : public ProgramTest {
  protected:
    Answer run(const std::string& arguments, const std::string& environment = {}) {
        return call(VANTREL_SOLVE, arguments, environment);
    }
    std::string drawn(const std::vector<fits::FitsCard>& cards = {}) {
        test::StarField field;
        field.width = 640;
        field.height = 480;
        field.wcs = test::wcsFor(640, 480, {75, 33}, 6, 20, true);
        fits::writeFits(folder_ / "field.fits", 640, 480,
                        test::drawField(sky::CompactCatalog::openBuiltIn().get(), field), cards);
        return (folder_ / "field.fits").string();
    }
};

// A distorted field: its solution, header and drawing.
TEST_F(VantrelSolve, PrintsAndWritesWhatItFinds) {
    test::StarField field;
    field.width = 900;
    field.height = 680;
    field.radial = -0.01;
    field.wcs = test::wcsFor(900, 680, {290, 10}, 12, 20, true);
    const std::string file = (folder_ / "field.fits").string();
    fits::writeFits(file, 900, 680, test::drawField(sky::CompactCatalog::openBuiltIn().get(), field), {});
    const Answer answer =
        run(file + " --ra 19.33 --dec 10 --scale 12 --json --wcs " + (folder_ / "wcs.fits").string() +
            " --annotate " + (folder_ / "drawn.png").string());
    ASSERT_EQ(answer.status, 0) << answer.err;
    const auto json = nlohmann::json::parse(answer.out);
    for (const auto& [key, value, tolerance] : {std::tuple{"ra_deg", 290.0, 1e-3},
                                                {"dec_deg", 10.0, 1e-3},
                                                {"scale_x", 12.0, 0.02},
                                                {"scale_y", -12.0, 0.02},
                                                {"rotation", 20.0, 0.05},
                                                {"residual_arcsec", 2.0, 2.0}})
        EXPECT_NEAR(json.at(key).get<double>(), value, tolerance) << key;
    EXPECT_TRUE(json.at("mirrored").get<bool>());
    EXPECT_EQ(json.at("cd").size(), 4U);
    EXPECT_GT(json.at("matched").get<int>(), 10);
    EXPECT_GE(json.at("stars_found").get<int>(), json.at("matched").get<int>());
    EXPECT_GT(json.at("seconds").get<double>(), 0);
    EXPECT_EQ(json.at("distortion_order").get<int>(), 3);
    const auto header = fits::FitsImage::open(folder_ / "wcs.fits").header();
    EXPECT_EQ(header.text("CTYPE2"), "DEC--TAN-SIP");
    EXPECT_NEAR(header.number("CRVAL1").value_or(0), 290, 1e-3);
    const auto drawn = pictures::openPicture(folder_ / "drawn.png");
    EXPECT_EQ(drawn.width(), 900U);
    EXPECT_EQ(drawn.height(), 680U);
}

TEST_F(VantrelSolve, TakesFromTheHeaderWhatIsNotGiven) {
    const std::string file = drawn({{"OBJCTRA", std::string("05 01 00")},
                                    {"OBJCTDEC", std::string("+33 10 00")},
                                    {"FOCALLEN", 206.264806},
                                    {"XPIXSZ", 6.1}});
    EXPECT_EQ(run(file).status, 0);
    EXPECT_EQ(run(file + " --scale 30").status, 0) << "a scale far off leaves the header's";
}

// The star patterns are made at the first search without a position and kept for the next.
TEST_F(VantrelSolve, SearchesTheWholeSky) {
    const std::string cache = "XDG_CACHE_HOME='" + (folder_ / "cache").string() + "' ";
    const std::string file = drawn();
    const Answer first = run(file + " --radius 180 --scale 5.9 --json", cache);
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_NE(first.err.find("making the star patterns"), std::string::npos) << first.err;
    const Answer far = run(file + " --radius 60 --ra 7.5 --dec 10 --scale 6.1 --json", cache);
    ASSERT_EQ(far.status, 0) << far.err;
    EXPECT_EQ(far.err, "");
    for (const Answer& answer : {first, far}) {
        const auto json = nlohmann::json::parse(answer.out);
        EXPECT_NEAR(json.at("ra_deg").get<double>(), 75, 1e-3);
        EXPECT_NEAR(json.at("dec_deg").get<double>(), 33, 1e-3);
        EXPECT_NEAR(json.at("scale_x").get<double>(), 6, 0.01);
    }
    EXPECT_EQ(run(file + " --radius 30 --ra 7.5 --dec 10 --scale 6.1", cache).status, 1)
        << "43 degrees off are out of reach";
}

TEST_F(VantrelSolve, SaysWhenItTakesTodaysDate) {
    const std::string hints = " --ra 5.03 --dec 33.4 --scale 6.2";
    const auto saysSo = [&](const std::string& arguments) {
        const Answer answer = run(arguments);
        EXPECT_EQ(answer.status, 0) << answer.err;
        return answer.out.find("today's, since the header tells none") != std::string::npos;
    };
    const std::string undated = drawn();
    EXPECT_TRUE(saysSo(undated + hints));
    EXPECT_FALSE(saysSo(undated + hints + " --date 2000-01-01"));
    const auto json = nlohmann::json::parse(run(undated + hints + " --json --date 2010-07-02T12:00:00").out);
    EXPECT_NEAR(json.at("epoch").get<double>(), 2010.5, 0.01);
    EXPECT_TRUE(json.at("dated").get<bool>());
    EXPECT_FALSE(saysSo(drawn({{"DATE-OBS", std::string("2000-01-01")}}) + hints));
}

TEST_F(VantrelSolve, SaysWhatAPictureLacks) {
    fits::writeFits(folder_ / "dark.fits", 640, 480, std::vector<std::uint16_t>(640 * 480, 500), {});
    const Answer answer = run((folder_ / "dark.fits").string() + " --ra 5 --dec 33 --scale 6 --json");
    EXPECT_EQ(answer.status, 1) << answer.err;
    EXPECT_EQ(nlohmann::json::parse(answer.out).at("reason").get<std::string>().find("No stars were found"),
              0U);
}

TEST_F(VantrelSolve, SolvesManyFilesInTheirOrder) {
    const std::string file = drawn();
    const Answer answer = run(file + " /nowhere.fits " + file + " --ra 5.03 --dec 33.4 --scale 6.2 --json");
    EXPECT_EQ(answer.status, 2) << "the worst of all";
    EXPECT_NE(answer.err.find("/nowhere.fits: No such file"), std::string::npos) << answer.err;
    std::istringstream lines(answer.out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const auto json = nlohmann::json::parse(line);
        EXPECT_EQ(json.at("file").get<std::string>(), file);
        EXPECT_TRUE(json.at("solved").get<bool>());
    }
    EXPECT_EQ(count, 2);
    EXPECT_NE(run(file + " " + file + " --ra 5.03 --dec 33.4 --scale 6.2").out.find(file + ":\nCentre"),
              std::string::npos);
}

// Capture programs start the solver that they know by its name, and read the files that it leaves.
TEST_F(VantrelSolve, AnswersToTheCommandLinesOfOtherSolvers) {
    const std::string file = drawn();
    for (const char* name : {"astap", "solve-field"})
        std::filesystem::create_symlink(VANTREL_SOLVE, folder_ / name);
    const auto called = [&](const std::string& command) {
        const std::string line = (folder_ / command).string() + " > '" + (folder_ / "out").string() + "'";
        return WEXITSTATUS(std::system(line.c_str()));
    };
    EXPECT_EQ(called("astap -f " + file + " -fov 0.82 -ra 5.03 -spd 123.4 -r 5 -z 0 -s 500 -wcs"), 0);
    const std::string ini = test::contentsOf(folder_ / "field.ini");
    EXPECT_EQ(ini.find("PLTSOLVD=T\n"), 0U) << ini;
    const auto value = [&](const std::string& key) {
        const auto at = ini.find("\n" + key + "=");
        return at == std::string::npos ? NAN : std::stod(ini.substr(at + key.size() + 2));
    };
    EXPECT_NEAR(value("CRVAL1"), 75, 1e-3);
    EXPECT_NEAR(value("CRVAL2"), 33, 1e-3);
    EXPECT_NEAR(value("CRPIX1"), 320.5, 1e-6);
    EXPECT_NEAR(value("CDELT2") * 3600, 6, 0.01);
    EXPECT_NEAR(value("CD1_1"), value("CDELT1") * std::cos(value("CROTA2") * sky::kDegree), 1e-7);
    EXPECT_NEAR(value("CD1_2"), -value("CDELT2") * std::sin(value("CROTA2") * sky::kDegree), 1e-7);
    EXPECT_NE(test::contentsOf(folder_ / "field.wcs").find("CTYPE1  = 'RA---TAN'"), std::string::npos);

    EXPECT_EQ(called("astap -f " + file + " -fov 0.82 -ra 15 -spd 60 -r 2 -o " + (folder_ / "far").string()),
              1);
    EXPECT_EQ(test::contentsOf(folder_ / "far.ini").find("PLTSOLVD=F\nERROR=The stars look sound"), 0U);
    folder_.write("bad.fits", "hello");
    EXPECT_EQ(called("astap -f " + (folder_ / "bad.fits").string() + " -ra 5 -spd 120"), 16);

    const std::string options =
        " --overwrite --no-plots --scale-units=arcsecperpix -L 5.5 -H 6.5 --downsample 2 ";
    EXPECT_EQ(
        called("solve-field" + options + "--ra 5:02:00 --dec +33:24:00 --radius 3 --new-fits none " + file),
        0);
    const std::string report = test::contentsOf(folder_ / "out");
    EXPECT_NE(report.find("Field center: (RA,Dec) = (75.00"), std::string::npos) << report;
    EXPECT_NE(report.find("Field size: 63.9"), std::string::npos) << report;
    EXPECT_EQ(test::contentsOf(folder_ / "field.solved"), "\1");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "field.new"));
    EXPECT_EQ(called("solve-field --ra 225 --dec -33 --radius 2 -u app -L 5.5 -H 6.5 --out far " + file), 0);
    EXPECT_NE(test::contentsOf(folder_ / "out").find("Did not solve"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "far.solved"));
}

TEST_F(VantrelSolve, TellsUnsolvedFromUnusable) {
    const std::string file = drawn();
    const std::string place = " --ra 5 --dec 33";
    const std::string text = folder_.write("text.fits", "hello").string();
    const struct {
        const char* why;
        std::string arguments;
        int status;
        const char* says;
    } cases[] = {
        {"another region", file + " --ra 15 --dec -33 --scale 6", 1, ""},
        {"no arguments", "", 2, "no file given"},
        {"no such file", "/nowhere.fits" + place + " --scale 6", 2, "/nowhere.fits: No such file"},
        {"a folder", folder_.path().string() + place + " --scale 6", 2, "not a file"},
        {"not FITS", text + place + " --scale 6", 2, "text.fits: "},
        {"no scale anywhere", file + place, 2, "the header tells no scale"},
        {"no position anywhere", file + " --scale 6", 2, "the header tells no position"},
        {"half a position", file + " --ra 5 --scale 6", 2, "go together"},
        {"not a number", file + " --ra five --dec 33 --scale 6", 2, "--ra must be a number"},
        {"declination beyond the pole", file + " --ra 5 --dec 91 --scale 6", 2, "--dec must be a number"},
        {"value missing", file + " --ra", 2, "--ra: 1 required HOURS missing"},
        {"no date", file + place + " --scale 6 --date today", 2, "--date must be a date"},
        {"one header for two files", file + " " + file + place + " --scale 6 --wcs out.fits", 2,
         "--wcs is for one file"},
        {"a drawing over the picture", file + place + " --scale 6 --annotate " + file, 2,
         "would write over the picture itself"},
        {"a drawing to nowhere", file + place + " --scale 6 --annotate /nowhere/a.png", 2,
         "/nowhere/a.png can't be written"},
        {"a header for a picture",
         folder_.write("a.jpg", "\xFF\xD8\xFF\xE0").string() + place + " --scale 6 --wcs o.fits", 2,
         "--wcs needs a FITS file"},
        {"folder without a catalogue",
         file + place + " --scale 6 --catalog " + folder_.path().string() + " --catalog-number 5", 2,
         "no star catalogue USNO-A2.0"},
        {"a catalogue that isn't on the network", file + place + " --scale 6 --catalog Internet", 2,
         "--catalog Internet needs --catalog-number 8 or 9"},
        {"no way to the network", file + place + " --scale 6 --catalog internet --catalog-number 9", 2,
         "the star catalogue NOMAD-Net can't be reached over the network: "},
        {"unwritable WCS file", file + place + " --scale 6 --wcs /nowhere/w.fits", 2, "\"/nowhere\""},
        {"help", "--help", 0, ""},
    };
    // Nobody listens at the discard port, so nothing is asked of the network where there is one.
    const std::string offline =
        "https_proxy=http://127.0.0.1:9 XDG_CACHE_HOME='" + (folder_ / "cache").string() + "' ";
    for (const auto& c : cases) {
        const Answer answer = run(c.arguments, offline);
        EXPECT_EQ(answer.status, c.status) << c.why << ": " << answer.err;
        EXPECT_NE(answer.err.find(c.says), std::string::npos) << c.why << ": " << answer.err;
        EXPECT_EQ(std::count(answer.err.begin(), answer.err.end(), '\n'), c.status == 2 ? 1 : 0)
            << c.why << answer.err;
    }
}

// ---- vantrel-catalog, and the solver with what it made

class VantrelCatalog : public ProgramTest {
  protected:
    Answer run(const std::string& program, const std::string& arguments) {
        return call(program, arguments, "XDG_DATA_HOME='" + (folder_ / "data").string() + "' ");
    }
    Answer make(const std::string& arguments) { return run(VANTREL_CATALOG, arguments); }

    /// The path of a file in the test's folder, for a command line.
    std::string named(const std::string& name) const { return "'" + (folder_ / name).string() + "'"; }
};

// A field of 0.3 degrees far from the Galaxy, in which Tycho-2 has hardly a star.
TEST_F(VantrelCatalog, MakesWhatTheSolverFindsByItself) {
    std::mt19937 random(3);
    const sky::SkyPosition centre{193, 31};
    const auto deep = test::deepSky(*sky::CompactCatalog::openBuiltIn(), centre, 2.5, 16.5, random);
    std::string table = "ra,dec,Vmag\n";
    std::vector<sky::CatalogStar> stars;
    for (const auto& star : deep) {
        stars.push_back({star.raDeg, star.decDeg, star.magnitude});
        table += test::formatted("%.7f,%.7f,%.3f\n", star.raDeg, star.decDeg, star.magnitude);
    }
    folder_.write("stars.csv", table);
    test::StarField field;
    field.width = 900;
    field.height = 680;
    field.tenthMagnitude = 400'000;
    field.wcs = test::wcsFor(900, 680, centre, 1.2, 40, false);
    const test::ListCatalog sky(stars);
    fits::writeFits(folder_ / "field.fits", 900, 680, test::drawField(&sky, field), {});
    const auto solve = [&](const std::string& more) {
        return run(VANTREL_SOLVE, named("field.fits") +
                                      " --ra 12.9 --dec 31.3 --scale 1.21 --date 2000-01-01 --json" + more);
    };
    EXPECT_EQ(solve("").status, 1) << "by Tycho-2 alone";

    const Answer made = make(named("stars.csv") + " --dec 28 34");
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_THAT(made.out, testing::HasSubstr("check sum right"));
    const std::string file = (folder_ / "data" / "vantrel" / "deep_stars.bin").string();
    for (const std::string& catalog : {std::string(), " --catalog '" + file + "'"}) {
        const Answer solved = solve(catalog);
        ASSERT_EQ(solved.status, 0) << catalog << solved.err;
        const auto json = nlohmann::json::parse(solved.out);
        EXPECT_LT(sky::separationDeg({json.at("ra_deg"), json.at("dec_deg")}, centre) * 3600, 0.3) << catalog;
        EXPECT_GT(json.at("matched").get<int>(), 20) << catalog;
    }
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - 1);
    const Answer cut = solve("");
    EXPECT_EQ(cut.status, 2);
    EXPECT_THAT(cut.err, testing::HasSubstr("deep_stars.bin is damaged"));
}

TEST_F(VantrelCatalog, ReadsDistributionsAndItsOwnFiles) {
    const test::TreeStars stars = {{10, 5.5, 12}, {200, 5.6, 13}, {200.01, 5.61, 14}};
    test::writeUsnoA(folder_ / "usno", stars);
    const Answer made =
        make(named("usno") + " --dec 5 6 --faintest 13.5 --epoch 2026 --out " + named("a.bin"));
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_THAT(made.out, testing::HasSubstr("Reading USNO-A"));
    EXPECT_THAT(made.out, testing::HasSubstr("a.bin: 2 stars at 2026.0, in cells of 0.1 degrees"));
    const Answer again = make(named("a.bin") + " --dec 5 6 --epoch 2026 --out " + named("a.bin"));
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(make("--check " + named("a.bin")).status, 0);
    std::string bytes = test::contentsOf(folder_ / "a.bin");
    bytes[100'000] ^= 1;
    folder_.write("b.bin", bytes);
    EXPECT_NE(make("--check " + named("b.bin")).status, 0);
    EXPECT_THAT(make("--help").out, testing::HasSubstr("Usage: vantrel-catalog"));
}

TEST_F(VantrelCatalog, LeavesNothingWhereItFails) {
    folder_.write("good.csv", "ra,dec,mag\n1,2,3\n");
    folder_.write("foreign.bin", "somebody's own");
    folder_.write("part/z600", "not of 78 bytes");
    const std::string out = " --out " + named("out.bin");
    const struct {
        std::string arguments;
        const char* says;
    } rows[] = {
        {"", "a catalogue must be named"},
        {named("none") + out, "there is no"},
        {named(".") + out, "no star catalogue that can be read is in"},
        {named("part") + out, "of the star catalogue is missing in"},
        {named("good.csv") + " --out " + named("foreign.bin"), "is there, and no compact star catalogue"},
        {named("good.csv") + " --dec 30 20" + out, "--dec must name a southern and a more northern"},
        {named("good.csv") + " --most 256" + out, "--most must be a number from 1 to 255"},
        {named("good.csv") + " --columns ra=X,hue=Y" + out, "--columns must be like"},
        {named("good.csv") + " " + named("good.csv") + out, "one catalogue at a time"},
        {named("good.csv") + " --epoch", "--epoch: 1 required YEAR missing"},
        {"--check " + named("good.csv"), "is not a compact star catalogue"},
    };
    for (const auto& row : rows) {
        const Answer answer = make(row.arguments);
        EXPECT_EQ(answer.status, 2) << row.arguments;
        EXPECT_THAT(answer.err, testing::HasSubstr(row.says)) << row.arguments;
        EXPECT_EQ(std::count(answer.err.begin(), answer.err.end(), '\n'), 1) << answer.err;
        for (const char* left : {"out.bin", "out.bin.part", "foreign.bin.part"})
            EXPECT_FALSE(std::filesystem::exists(folder_ / left)) << row.arguments;
    }
    EXPECT_EQ(test::contentsOf(folder_ / "foreign.bin"), "somebody's own");
}

}  // namespace
}  // namespace vantrel::tools
