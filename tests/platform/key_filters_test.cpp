#include "platform/key_filters.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace vantrel::platform {
namespace {

TEST(KeyFilters, LetThroughWhatANumberNeeds) {
    const struct {
        int code;
        int whole, decimal;
    } rows[] = {
        {8, 8, 8},     {13, 13, 13},  {'#', '#', '#'}, {'0', '0', '0'}, {'9', '9', '9'},
        {'.', 0, '.'}, {',', 0, '.'}, {'-', 0, 0},     {'/', 0, 0},     {':', 0, 0},
        {'e', 0, 0},   {9, 0, 0},     {0x20AC, 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(wholeNumberKey(row.code), row.whole) << row.code;
        EXPECT_EQ(decimalNumberKey(row.code), row.decimal) << row.code;
    }
}

TEST(Characters, AreCountedWhole) {
    const std::string text =
        "a\xC2\xB0"
        "b\xE2\x82\xAC";  // a, degree sign, b, euro sign
    EXPECT_EQ(firstCharacters(text, 0), "");
    EXPECT_EQ(firstCharacters(text, 2), "a\xC2\xB0");
    EXPECT_EQ(firstCharacters(text, 9), text);
    EXPECT_EQ(lastCharacters(text, 0), "");
    EXPECT_EQ(lastCharacters(text, 2), "b\xE2\x82\xAC");
    EXPECT_EQ(lastCharacters(text, 9), text);
}

}  // namespace
}  // namespace vantrel::platform
