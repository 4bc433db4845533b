#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "app/measurement_table.h"
#include "support/temp_folder.h"

namespace vantrel::app {
namespace {

constexpr const char* kHeader =
    "utc,telescope,latitude_deg,shown,amplitude_deg,angle_deg,sigma_arcsec,agreement,note";

/// "amplitude telescope" of each.
std::string told(const std::vector<engine::PastMeasurement>& measurements) {
    std::string texts;
    for (const auto& one : measurements)
        texts +=
            (texts.empty() ? "" : ", ") + std::to_string(one.amplitude).substr(0, 4) + ' ' + one.telescope;
    return texts;
}

TEST(MeasurementTable, ReadsWhatIsTold) {
    const auto read = pastMeasurements(MeasurementColumns(kHeader),
                                       "2026-11-24T20:00:05Z,\"A \"\"big\"\", old mount\",50.1,least "
                                       "squares,0.25,120.5,5.2,consistent,\r\n");
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].when, *platform::parseInstant("2026-11-24T20:00:05Z"));
    EXPECT_EQ(read[0].telescope, "A \"big\", old mount");
    EXPECT_EQ(read[0].latitude, 50.1);
    EXPECT_TRUE(read[0].leastSquares);
    EXPECT_EQ(read[0].amplitude, 0.25);
    EXPECT_EQ(read[0].angle, 120.5);
    EXPECT_EQ(read[0].sigma, 5.2);
    EXPECT_EQ(read[0].agreement, "consistent");
}

TEST(MeasurementTable, MakesTheBestOfAnything) {
    const std::string time = "2026-11-24T20:00:05Z,", row = time + "M,50,written,0.25,120,5,consistent,\r\n";
    const std::string anew = "0.30,120,5,consistent,plate 2 left out\r\n";
    const struct {
        const char* why;
        std::string header, lines;
        const char* wanted;
    } cases[] = {
        {"nothing", "", "", ""},
        {"no header", row, row, ""},
        {"another table", "a,b,c", "1,2,3\r\n", ""},
        {"two", kHeader, row + row, "0.25 M, 0.25 M"},
        {"line feeds alone, empty lines", kHeader, "\n" + row + "\n\n2026-11-25T20:00:00Z,,,,1,0\n",
         "0.25 M, 1.00 "},
        {"older: fewer columns, in another order", "angle_deg,amplitude_deg,utc",
         "1,0.5,2026-01-01T00:00:00\n", "0.50 "},
        {"columns of others", "mine,utc,amplitude_deg,angle_deg,more", "x," + time + "0.5,1,y,z\n", "0.50 "},
        {"a spreadsheet's marks", "\xEF\xBB\xBFutc;amplitude_deg;angle_deg", "2026-01-01T00:00:00Z;0,5;1\n",
         "0.50 "},
        {"no result", kHeader, time + "M,50,none,,,,,\r\n", ""},
        {"cut in the error", kHeader, time + "M,50,written,0.2", ""},
        {"cut, and the next one behind it", kHeader, time + "M,50,written,0.2" + row + row, "0.25 M"},
        {"a quote without its end", kHeader, time + "\"M,50,written,0.25,120\r\n" + row, "0.25 M"},
        {"no number", kHeader, time + "M,50,written,nan,1\n", ""},
        {"no number that can be held", kHeader, time + "M,50,written,1e999,1\n", ""},
        {"too much", kHeader, time + "M,50,written,181,1\n", ""},
        {"too little", kHeader, time + "M,50,written,-1,1\n", ""},
        {"no time", kHeader, "yesterday,M,50,written,0.25,120\n", ""},
        {"zero bytes", kHeader, std::string(500, '\0') + "\n" + row, "0.25 M"},
        {"calculated anew", kHeader, row + "2026-11-24T20:01:00Z,M,50,written," + anew, "0.30 M"},
        {"anew, of another mount", kHeader, row + "2026-11-24T20:01:00Z,N,50,written," + anew,
         "0.25 M, 0.30 N"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(told(pastMeasurements(MeasurementColumns(c.header), c.lines)), c.wanted) << c.why;
    const auto odd = pastMeasurements(MeasurementColumns(kHeader),
                                      "2026-11-24T20:00:05Z,M,ninety,written,0.25,120,-5,?,\r\n");
    ASSERT_EQ(odd.size(), 1u);
    EXPECT_FALSE(odd[0].latitude || odd[0].sigma) << "what can't be is missing";
}

struct TableFile : testing::Test {
    void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }

    test::TempFolder folder;
    const std::filesystem::path file = folder / "Measurements.csv";
};

TEST_F(TableFile, OfAHugeOneTheLastLinesAreRead) {
    std::ofstream stream(file, std::ios::binary);
    stream << kHeader << "\r\n";
    for (int i = 0; i < 200'000; ++i)
        stream << "2026-11-24T20:00:05Z,M,50,written,0.25,120,5,consistent,\r\n";
    stream << "2026-11-24T20:00:05Z,Last,50,written,0.50,120,5,consistent,\r\n" << std::flush;
    const auto read = readMeasurements(file);
    EXPECT_GT(read.size(), 500u);
    EXPECT_LT(read.size(), 5000u);
    EXPECT_EQ(read.front().telescope, "M") << "not a part of a line";
    EXPECT_EQ(read.back().telescope, "Last");
}

TEST_F(TableFile, WhatCantBeReadTellsNothing) {
    EXPECT_TRUE(readMeasurements(file).empty()) << "there is none";
    EXPECT_TRUE(readMeasurements(folder.path()).empty()) << "a folder";
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(readMeasurements(folder / "pipe").empty()) << "nobody writes into it";
    write("");
    EXPECT_TRUE(readMeasurements(file).empty());
    write(std::string(1'000'000, 'x'));
    EXPECT_TRUE(readMeasurements(file).empty());
    write(std::string(1'000'000, '\n'));
    EXPECT_TRUE(readMeasurements(file).empty());
}

TEST_F(TableFile, ALastLineWithoutItsEndCountsWhenItIsWhole) {
    const std::string begin =
        std::string(kHeader) + "\r\n2026-11-24T20:00:05Z,M,50,written,0.25,120,5,consistent,\r\n";
    write(begin + "2026-11-25T20:00:05Z,M,50,written,0.5000,12");
    EXPECT_EQ(told(readMeasurements(file)), "0.25 M") << "the angle may have been 120";
    write(begin + "2026-11-25T20:00:05Z,M,50,written,0.50,120,5,consistent,");
    EXPECT_EQ(told(readMeasurements(file)), "0.25 M, 0.50 M");
    write(kHeader);
    EXPECT_TRUE(readMeasurements(file).empty());
}

}  // namespace
}  // namespace vantrel::app
