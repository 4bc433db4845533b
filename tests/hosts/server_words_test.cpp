// What servers say of themselves and of where they point.
#include <gtest/gtest.h>

#include "hosts/mount_position.h"
#include "hosts/server_text.h"

namespace vantrel::hosts {
namespace {

TEST(OneLine, KeepsSoundCharactersAlone) {
    const struct {
        std::string words, line;
    } rows[] = {
        {"plain", "plain"},
        {" two\r\nlines\x7f. ", "two  lines ."},
        {"\xC3\xA9 \xE2\x84\x96 \xF0\x9F\x94\xAD.", "\xC3\xA9 \xE2\x84\x96 \xF0\x9F\x94\xAD."},
        {"cut \xF0\x9F\x94", "cut ???"},
        {"cut \xC3", "cut ?"},
        {"Latin \xE9t\xE9", "Latin ?t?"},
        {"too long \xC0\xAF \xE0\x80\xAF \xF0\x80\x80\xAF", "too long ?? ??? ????"},
        {"surrogate \xED\xA0\x80", "surrogate ???"},
        {"beyond \xF4\x90\x80\x80 \xF5\x80\x80\x80", "beyond ???? ????"},
        {"\xEF\xBF\xBD \xF0\x90\x80\x80 \xE0\xA0\x80.", "\xEF\xBF\xBD \xF0\x90\x80\x80 \xE0\xA0\x80."},
    };
    for (const auto& row : rows) EXPECT_EQ(oneLine(row.words), row.line);
    EXPECT_EQ(oneLine(std::string(5000, 'x')).size(), 300U);
}

TEST(ParsePort, TakesPortsAlone) {
    EXPECT_EQ(parsePort("1"), 1);
    EXPECT_EQ(parsePort("65535"), 65535);
    for (const char* text : {"", "0", "65536", "-1", " 80", "80 ", "7624x", "99999999999"})
        EXPECT_EQ(parsePort(text), std::nullopt) << text;
}

TEST(MountPosition, SeparationIsTheAngleOnTheSky) {
    const struct {
        MountPosition a, b;
        double degrees;
    } rows[] = {
        {{5, 0}, {5, 0}, 0},        {{5, 10}, {5, -20}, 30},   {{23.5, 0}, {0.5, 0}, 15},
        {{0, 89.5}, {12, 89.5}, 1}, {{3, -90}, {17, 90}, 180}, {{6, 60}, {6.001, 60}, 0.0075},
        {{0, 0}, {6, 45}, 90},
    };
    for (const auto& row : rows) EXPECT_NEAR(separation(row.a, row.b), row.degrees, 1e-9);
}

}  // namespace
}  // namespace vantrel::hosts
