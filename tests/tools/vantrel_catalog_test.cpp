// The program vantrel-catalog as its callers see it, and the solver with what it made.

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "fits/fits_writing.h"
#include "sky/compact_catalog.h"
#include "support/catalog_trees.h"
#include "support/deep_sky.h"
#include "support/list_catalog.h"
#include "support/star_field.h"
#include "support/temp_folder.h"

namespace vantrel::tools {
namespace {

namespace fs = std::filesystem;

struct Answer {
    int status = -1;
    std::string out;
    std::string err;
};

class VantrelCatalog : public testing::Test {
  protected:
    Answer run(const std::string& program, const std::string& arguments) {
        const std::string command = "XDG_DATA_HOME='" + (folder_ / "data").string() + "' " + program + " " +
                                    arguments + " > '" + (folder_ / "out").string() + "' 2> '" +
                                    (folder_ / "err").string() + "'";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, test::contentsOf(folder_ / "out"),
                test::contentsOf(folder_ / "err")};
    }
    Answer make(const std::string& arguments) { return run(VANTREL_CATALOG, arguments); }

    /// The path of a file in the test's folder, for a command line.
    std::string named(const std::string& name) const { return "'" + (folder_ / name).string() + "'"; }

    test::TempFolder folder_{test::TempFolder::quickPlace()};
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
    fs::resize_file(file, fs::file_size(file) - 1);
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
    folder_.write("cut.csv", "ra,dec,mag\n1,2,3\n4,5");
    folder_.write("foreign.bin", "somebody's own");
    folder_.write("part/z600", "not of 78 bytes");
    const std::string compact =
        test::contentsOf(sky::CompactCatalog::openBuiltIn()->folder() / sky::kTychoFileName);
    folder_.write("short.bin", compact.substr(0, compact.size() / 2));
    std::string changed = compact;
    changed[5'000'000] ^= 1;
    folder_.write("changed.bin", changed);
    const std::string out = " --out " + named("out.bin");
    const struct {
        std::string arguments;
        const char* says;
    } rows[] = {
        {"", "a catalogue must be named"},
        {named("none") + out, "there is no"},
        {named("data") + out, "there is no"},
        {named(".") + out, "no star catalogue that can be read is in"},
        {named("cut.csv") + out, "cut.csv: line 3: has 2 fields"},
        {named("foreign.bin") + out, "foreign.bin: line 1: holds no names of columns"},
        {named("part") + out, "of the star catalogue is missing in"},
        {named("part") + " --dec 29 30" + out, "missing in"},
        {named("short.bin") + out, "short.bin is damaged: its header and its size disagree"},
        {named("changed.bin") + out, "changed.bin is damaged: its check sum is wrong"},
        {named("good.csv") + " --out " + named("foreign.bin"), "is there, and no compact star catalogue"},
        {named("good.csv") + " --out " + named("none/out.bin"), "can't be written"},
        {named("good.csv") + " --faintest 2" + out, "no star was found within the limits"},
        {named("good.csv") + " --dec 30 20" + out, "--dec must name a southern and a more northern"},
        {named("good.csv") + " --dec 1.5 20" + out, "--dec must be a whole number"},
        {named("good.csv") + " --most 256" + out, "--most must be a number from 1 to 255"},
        {named("good.csv") + " --columns ra=X,hue=Y" + out, "--columns must be like"},
        {named("good.csv") + " --columns ra=X" + out, "there is no column of right ascensions (X)"},
        {named("good.csv") + " " + named("cut.csv") + out, "one catalogue at a time"},
        {named("changed.bin") + " --table-epoch 2016" + out, "its check sum is wrong"},
        {named("good.csv") + " --speed 3" + out, "not expected: --speed"},
        {named("good.csv") + " --epoch", "--epoch: 1 required YEAR missing"},
        {"--check " + named("good.csv"), "is not a compact star catalogue"},
    };
    for (const auto& row : rows) {
        const Answer answer = make(row.arguments);
        EXPECT_EQ(answer.status, 2) << row.arguments;
        EXPECT_THAT(answer.err, testing::HasSubstr(row.says)) << row.arguments;
        EXPECT_EQ(std::count(answer.err.begin(), answer.err.end(), '\n'), 1) << answer.err;
        for (const char* left : {"out.bin", "out.bin.part", "foreign.bin.part"})
            EXPECT_FALSE(fs::exists(folder_ / left)) << row.arguments;
    }
    EXPECT_EQ(test::contentsOf(folder_ / "foreign.bin"), "somebody's own");
}

}  // namespace
}  // namespace vantrel::tools
