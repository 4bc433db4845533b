#include "platform/text.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "platform/folder_map.h"
#include "platform/sexagesimal.h"
#include "platform/sidereal.h"
#include "platform/site_angle.h"
#include "support/refusal.h"

namespace vantrel::platform {
namespace {

using test::failureOf;

TEST(Text, FormatsNumbersInFixedPatterns) {
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        const char* pattern;
        const char* text;
    } cases[] = {
        {1.23456, "0.0000", "1.2346"},
        {-1.5, "0.00000", "-1.50000"},
        {0.00005, "0.0000", "0.0001"},    // halves go away from zero
        {-0.00005, "0.0000", "-0.0001"},  //
        {-0.00004, "0.0000", "0.0000"},   // no sign on zeros
        {1.005, "0.00", "1.01"},          // by its decimal digits, not by the binary fraction below them
        {1.0049999, "0.00", "1.00"},      //
        {9.9996, "0.000", "10.000"},      // carries into a new digit
        {5, "00.000", "05.000"},          // leading zeros
        {123.4, "00", "123"},             //
        {0.5, "0", "1"},                  //
        {2.5, "#.###", "2.5"},            // optional digits
        {0.25, "#.##", ".25"},            //
        {3, "0.0##", "3.0"},              //
        {1e22, "0.0", "10000000000000000000000.0"},
        {inf, "0.0", "inf"},
        {std::nan(""), "0.0", "nan"},
    };
    for (const auto& c : cases) EXPECT_EQ(formatNumber(c.value, c.pattern), c.text) << c.pattern;
}

TEST(Text, WritesNumbersShort) {
    const std::pair<double, const char*> cases[] = {
        {4, "4"}, {0.1 + 0.2, "0.3"}, {-0.0, "0"}, {1e300, "1e+300"}, {-2.5, "-2.5"}, {100000, "100000"}};
    for (const auto& [value, text] : cases) EXPECT_EQ(toText(value), text);
}

TEST(Text, ReadsWholeAndLeadingNumbers) {
    const struct {
        const char* text;
        std::optional<double> whole;
        double leading;
    } cases[] = {
        {"15", 15, 15},
        {" -3.5 ", -3.5, -3.5},
        {"1,5", 1.5, 1.5},
        {".5", 0.5, 0.5},
        {"1e3", 1000, 1000},
        {"1e", std::nullopt, 1},
        {"12abc", std::nullopt, 12},
        {"1 000", std::nullopt, 1},
        {"", std::nullopt, 0},
        {"nan", std::nullopt, 0},
        {"0x10", std::nullopt, 0},
        {"1e999", std::nullopt, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseNumber(c.text), c.whole) << c.text;
        EXPECT_EQ(leadingNumber(c.text), c.leading) << c.text;
        const int failure = failureOf([&] { toNumber(c.text); });
        EXPECT_EQ(failure, c.whole ? 0 : error_number::kTypeMismatch) << c.text;
    }
}

TEST(Text, RoundsToIntegersHalvesToEven) {
    EXPECT_EQ(toInt16(2.5), 2);
    EXPECT_EQ(toInt16(3.5), 4);
    EXPECT_EQ(toInt16(-2.5), -2);
    EXPECT_EQ(toInt32(32768), 32768);
    for (double tooLarge : {32767.6, -32768.6, 1e300, std::nan("")})
        EXPECT_EQ(failureOf([&] { toInt16(tooLarge); }), error_number::kOverflow) << tooLarge;
    EXPECT_EQ(failureOf([&] { toInt32(2147483648.0); }), error_number::kOverflow);
}

TEST(Text, CountsCharactersNotBytes) {
    const std::string text = "a\xC3\xA4\xE2\x82\xAC";  // three characters
    EXPECT_EQ(firstCharacters(text, 2), "a\xC3\xA4");
    EXPECT_EQ(lastCharacters(text, 2), "\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(lastCharacters(text, 9), text);
    EXPECT_EQ(firstCharacters(text, 9), text);
}

// ---- sexagesimal

TEST(Sexagesimal, Texts) {
    struct Case {
        const char* why;
        double value;
        int decimals;
        const char* expected;
    };
    const Case cases[] = {
        {"plain", 12.5, 2, "12d30m00.00s"},
        {"two digits at least", 1.0 + 2 / 60.0 + 3.25 / 3600, 2, "01d02m03.25s"},
        {"no decimals, no point", 1.5125, 0, "01d30m45s"},
        {"seconds and minutes carry", 10.99999999, 2, "11d00m00.00s"},
        {"rounds up to 60 without decimals", 10.0 + 59.6 / 3600, 0, "10d01m00s"},
        {"just below the carry", 10.0 + 59.994 / 3600, 2, "10d00m59.99s"},
        {"negative below one unit", -0.25, 1, "-00d15m00.0s"},
        {"negative with carry", -0.9999999999, 2, "-01d00m00.00s"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FormatDMS(c.value, "d", "m", "s", c.decimals), c.expected) << c.why;
        EXPECT_EQ(FormatHMS(c.value, "d", "m", "s", c.decimals), c.expected) << c.why;
    }
}

TEST(Sexagesimal, SolvedPositions) {
    EXPECT_EQ(raText(5.51), "05h 30m 36.000s");
    EXPECT_EQ(decText(-20.2525), "-20° 15' 09.00\"");
}

// ---- site angle

constexpr auto kLat = SiteAxis::kLatitude;
constexpr auto kLon = SiteAxis::kLongitude;

TEST(SiteAngle, ReadsWhatOperatorsWrite) {
    constexpr double kExact = 48.0 + 30.0 / 60 + 15.5 / 3600;
    const struct {
        SiteAxis axis;
        const char* text;
        double degrees;
        const char* unlettered = text;
    } rows[] = {
        {kLat, "48.5", 48.5},
        {kLat, "-48,5", -48.5},
        {kLat, " +48.5 ", 48.5, "+48.5"},
        {kLat, "\u221248.5", -48.5, "-48.5"},
        {kLat, ".5", 0.5},
        {kLat, "90", 90},
        {kLat, "48 30", 48.5},
        {kLat, "48d 30m 15.5s", kExact},
        {kLat, "48\u00B0 30' 15.5\"", kExact},
        {kLat, "48:30:15.5", kExact},
        {kLat, "48-30-15.5", kExact},
        {kLat, "48 deg 30 min 15.5 sec", kExact},
        {kLat, "-00d 30m", -0.5},
        {kLat, "48.5 S", -48.5, "48.5"},
        {kLat, "48.5s", -48.5, "48.5"},
        {kLat, "S48.5", -48.5, "48.5"},
        {kLat, "48 30 15.5s", kExact},
        {kLat, "48 30 15.5S", -kExact, "48 30 15.5"},
        {kLat, "48d 30m 15.5s S", -kExact, "48d 30m 15.5s"},
        {kLat, "48\u00B030'15.5\"S", -kExact, "48\u00B030'15.5\""},
        {kLon, "11 15 W", -11.25, "11 15"},
        {kLon, "E 11.25", 11.25, "11.25"},
        {kLon, "-360", -360},
    };
    for (const auto& row : rows) {
        const auto angle = readSiteAngle(row.text, row.axis);
        ASSERT_TRUE(angle) << row.text;
        EXPECT_DOUBLE_EQ(angle->degrees, row.degrees) << row.text;
        EXPECT_EQ(angle->unlettered, row.unlettered) << row.text;
        EXPECT_EQ(angle->opposite, angle->degrees < 0 && angle->unlettered.front() != '-') << row.text;
    }
}

TEST(SiteAngle, RefusesEverythingElse) {
    for (const char* text : {"",       " ",      "north",   "S",       "-",       "48.5 X",   "48.5 E",
                             "48.5 W", "x48.5",  "48.5.5",  "48.5 30", "48 60",   "48 30 60", "48 30 15 10",
                             "90.1",   "90 0 1", "-91",     "-48.5 S", "-48.5 N", "+48.5 S",  "--48",
                             "S 48 S", "4e1",    "48d 30d", "30' 48d", "inf",     "1e400",    "48.5\u00B0C"})
        EXPECT_FALSE(readSiteAngle(text, kLat)) << text;
    for (const char* text : {"11.5 N", "11.5 S", "360.1", "E 11 W"})
        EXPECT_FALSE(readSiteAngle(text, kLon)) << text;
}

// ---- sidereal

TEST(LocalMeanSiderealTime, AgreesWithPublishedValues) {
    struct Case {
        const char* source;
        const char* utc;
        double longitude;  // degrees, east positive
        double hours;
    };
    constexpr double kMinute = 1.0 / 60, kSecond = 1.0 / 3600;
    for (const Case& c : {
             Case{"Meeus, example 12.a", "1987-04-10T00:00:00Z", 0, 13 + 10 * kMinute + 46.3668 * kSecond},
             Case{"Meeus, example 12.b", "1987-04-10T19:21:00Z", 0, 8 + 34 * kMinute + 57.0896 * kSecond},
             Case{"the same, past 24 h", "1987-04-10T19:21:00Z", -135, 23 + 34 * kMinute + 57.0896 * kSecond},
         }) {
        const double got = localMeanSiderealTime(*parseInstant(c.utc), c.longitude * std::numbers::pi / 180);
        EXPECT_NEAR(got, c.hours, 0.0005 * kSecond) << c.source << " at " << c.utc;
    }
    const double nowhere = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(localMeanSiderealTime(*parseInstant("2026-11-24T20:00:00Z"), nowhere)));
}

// ---- folder texts

TEST(FolderMap, TurnsFolderTextsIntoPathsThatStayInside) {
    FolderMap folders("/data/drives");
    folders.map(R"(C:\Users\me\Documents\)", "/home/me/Papers");
    const struct {
        const char* why;
        const char* text;
        const char* path;
    } cases[] = {
        {"drive", R"(C:\Images\a.fit)", "/data/drives/c/Images/a.fit"},
        {"drive alone", "D:", "/data/drives/d"},
        {"no drive", R"(\Images)", "/data/drives/c/Images"},
        {"mapped", R"(C:\Users\me\Documents)", "/home/me/Papers"},
        {"mapped, other case", R"(c:\USERS\Me\documents\Log)", "/home/me/Papers/Log"},
        {"only the beginning of a name", R"(C:\Users\me\Documents2)", "/data/drives/c/Users/me/Documents2"},
        {"up and out", R"(C:\..\..\etc\passwd)", "/data/drives/c/etc/passwd"},
        {"doubled", R"(C:\\Images\\.\x)", "/data/drives/c/Images/x"},
        {"a real path", "/tmp/x", "/tmp/x"},
        {"empty", "", "/data/drives/c"},
    };
    for (const auto& c : cases) EXPECT_EQ(folders.real(c.text), c.path) << c.why;
}

TEST(FolderMap, NamesPathsByTheirFolders) {
    FolderMap folders("/data/drives");
    folders.map(R"(C:\Users\me\Documents)", "/home/me/Papers/");
    const std::pair<const char*, const char*> cases[] = {
        {"/data/drives/c/Images/a.fit", R"(C:\Images\a.fit)"},   {"/data/drives/d", R"(D:\)"},
        {"/home/me/Papers/Log", R"(C:\Users\me\Documents\Log)"}, {"/home/me/Papers2", "/home/me/Papers2"},
        {"/data/drives/long/x", "/data/drives/long/x"},
    };
    for (const auto& [path, text] : cases) EXPECT_EQ(folders.text(path), text);
}

TEST(FolderMap, JoinsWithOneBackslash) {
    EXPECT_EQ(joinFolder("C:", "a.fit"), R"(C:\a.fit)");
    EXPECT_EQ(joinFolder(R"(C:\)", "a.fit"), R"(C:\a.fit)");
    EXPECT_EQ(joinFolder("", "a.fit"), R"(\a.fit)");
}

}  // namespace
}  // namespace vantrel::platform
