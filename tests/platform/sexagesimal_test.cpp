#include "platform/sexagesimal.h"

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

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
        {"more than two digits", 359.5, 1, "359d30m00.0s"},
        {"no decimals, no point", 1.5125, 0, "01d30m45s"},
        {"seconds carry", 10.0 + 59.99999 / 3600, 2, "10d01m00.00s"},
        {"seconds and minutes carry", 10.99999999, 2, "11d00m00.00s"},
        {"rounds up to 60 without decimals", 10.0 + 59.6 / 3600, 0, "10d01m00s"},
        {"just below the carry", 10.0 + 59.994 / 3600, 2, "10d00m59.99s"},
        {"negative below one unit", -0.25, 1, "-00d15m00.0s"},
        {"negative with carry", -0.9999999999, 2, "-01d00m00.00s"},
        {"zero", 0, 2, "00d00m00.00s"},
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

}  // namespace
}  // namespace vantrel::platform
