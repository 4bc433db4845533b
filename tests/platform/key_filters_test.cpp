#include "platform/key_filters.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace vantrel::platform
