#include "platform/text.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "platform/errors.h"

namespace vantrel::platform {
namespace {

/// The number of the failure that the call ends with; 0 when it succeeds.
template <typename Call>
int failureOf(Call call) {
    try {
        call();
        return 0;
    } catch (const OperationError& error) {
        return error.number();
    }
}

TEST(Text, FormatsNumbersInFixedPatterns) {
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        const char* pattern;
        const char* text;
    } cases[] = {
        {0, "0.0000", "0.0000"},
        {1.23456, "0.0000", "1.2346"},
        {-1.5, "0.00000", "-1.50000"},
        {0.00005, "0.0000", "0.0001"},    // halves go away from zero
        {-0.00005, "0.0000", "-0.0001"},  //
        {-0.00004, "0.0000", "0.0000"},   // no sign on zeros
        {1.005, "0.00", "1.01"},          // by its decimal digits, not by the binary fraction below them
        {2.675, "0.00", "2.68"},          //
        {0.285, "0.00", "0.29"},          //
        {1.0049999, "0.00", "1.00"},      //
        {9.9996, "0.000", "10.000"},      // carries into a new digit
        {0.99996, "0.0000", "1.0000"},    //
        {5, "00.000", "05.000"},          // leading zeros
        {123.4, "00", "123"},             //
        {0.5, "0", "1"},                  //
        {2.5, "#.###", "2.5"},            // optional digits
        {0.25, "#.##", ".25"},            //
        {3, "0.0##", "3.0"},              //
        {1e22, "0.0", "10000000000000000000000.0"},
        {1e-30, "0.0000", "0.0000"},
        {123456789.123456789, "0.000000", "123456789.123457"},
        {inf, "0.0", "inf"},
        {-inf, "0.0", "-inf"},
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
        {"+2", 2, 2},
        {"1,5", 1.5, 1.5},
        {".5", 0.5, 0.5},
        {"5.", 5, 5},
        {"1e3", 1000, 1000},
        {"1e", std::nullopt, 1},
        {"12abc", std::nullopt, 12},
        {"1.2.3", std::nullopt, 1.2},
        {"1 000", std::nullopt, 1},
        {"", std::nullopt, 0},
        {"abc", std::nullopt, 0},
        {"-", std::nullopt, 0},
        {"nan", std::nullopt, 0},
        {"inf", std::nullopt, 0},
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
    EXPECT_EQ(firstCharacters(text, 0), "");
    EXPECT_EQ(lastCharacters(text, 0), "");
}

}  // namespace
}  // namespace vantrel::platform
