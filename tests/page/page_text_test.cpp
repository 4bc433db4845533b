// What browsers are told, and at which address.
#include "page/page_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "page/own_address.h"
#include "page/png.h"
#include "page/qr_code.h"

namespace vantrel::page {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(PageText, FiguresStandForThemselves) {
    const struct {
        const char *move, *words, *figures;
    } cases[] = {
        {"turn west 3.2'", "turn west", "3.2'"},
        {"turn east 1.2°", "turn east", "1.2°"},
        {"–", "–", ""},
        {"", "", ""},
        {"blank ", "blank ", ""},
    };
    for (const auto& [move, words, figures] : cases) {
        const MoveText got = splitMove(move);
        EXPECT_EQ(got.words, words) << move;
        EXPECT_EQ(got.figures, figures) << move;
    }
}

/// Whatever stands in the captions, an event stays one line of data.
TEST(PageText, AnEventIsOneLineThatReadsBack) {
    platform::LiveView view{.azimuth = {"Azimuth", "←", "turn west 3.2'", "± 8″", "a \"quarter\"\nturn"},
                            .verdict = "cut \xE2\x80 off",
                            .age = 3,
                            .stale = true,
                            .dial = "<svg></svg>"};
    const std::string event = eventText(view, 7);
    ASSERT_TRUE(event.starts_with("data: ") && event.ends_with("\n\n")) << event;
    EXPECT_EQ(event.find('\n'), event.size() - 2);
    const auto read = nlohmann::json::parse(event.substr(6));
    EXPECT_EQ(read["azimuth"]["figures"], "3.2'");
    EXPECT_EQ(read["azimuth"]["bolt"], "a \"quarter\"\nturn");
    EXPECT_EQ(read["age"], 3);
    EXPECT_EQ(read["stale"], true);
    EXPECT_EQ(read["picture"], 7);
    view.age.reset();
    EXPECT_TRUE(nlohmann::json::parse(eventText(view, 0).substr(6))["age"].is_null());
}

TEST(PageText, NothingButItsOwnScriptRuns) {
    const std::string page = pageText("/token", "odd");
    EXPECT_THAT(page, AllOf(HasSubstr("<script nonce=\"odd\">"), HasSubstr("<style nonce=\"odd\">"),
                            HasSubstr("'/token'"), Not(HasSubstr("@BASE@")), Not(HasSubstr("http://")),
                            Not(HasSubstr("https://")), Not(HasSubstr("style="))));
    EXPECT_THAT(policyOf("odd"), AllOf(HasSubstr("default-src 'none'"), HasSubstr("script-src 'nonce-odd'"),
                                       Not(HasSubstr("unsafe"))));
}

TEST(OwnAddress, IsOneThatATelephoneCanReachAndTheWorldCannot) {
    const struct {
        const char* why;
        std::vector<OwnAddress> addresses;
        std::optional<std::string> chosen;
    } cases[] = {
        {"no network", {}, std::nullopt},
        {"only itself", {{"lo", "127.0.0.1"}}, std::nullopt},
        {"the world reaches it", {{"eth0", "93.184.216.34"}, {"eth1", "172.32.0.1"}}, std::nullopt},
        {"real before containers", {{"docker0", "172.17.0.1"}, {"wlan0", "192.168.4.17"}}, "192.168.4.17"},
        {"real before virtual", {{"vEthernet (WSL)", "192.168.5.1"}, {"Wi-Fi", "10.0.0.5"}}, "10.0.0.5"},
        {"no address",
         {{"eth0", ""}, {"eth1", "192.168.1"}, {"eth2", "192.168.1.256"}, {"eth3", "10.0.0.5x"}},
         std::nullopt},
        {"given before invented", {{"eth0", "169.254.3.4"}, {"wlan0", "10.0.0.5"}}, "10.0.0.5"},
        {"invented rather than none", {{"lo", "127.0.0.1"}, {"eth0", "169.254.3.4"}}, "169.254.3.4"},
        {"the first of equals", {{"eth0", "192.168.1.2"}, {"wlan0", "192.168.1.3"}}, "192.168.1.2"},
    };
    for (const auto& [why, addresses, chosen] : cases) EXPECT_EQ(localAddress(addresses), chosen) << why;
}

/// The three large squares in the corners, by which telephones find a code.
TEST(QrCode, HasItsCornersAndRoomForAnAddress) {
    const QrCode code = qrCodeOf("http://192.168.100.100:41233/0123456789abcdef0123456789abcdef/");
    const auto side = static_cast<std::size_t>(code.side);
    ASSERT_EQ(code.dark.size(), side * side);
    EXPECT_GE(code.side, 33);
    const auto dark = [&](int x, int y) { return code.isDark(x, y); };
    for (const auto& [left, top] : {std::pair{0, 0}, {code.side - 7, 0}, {0, code.side - 7}}) {
        EXPECT_TRUE(dark(left, top) && dark(left + 6, top + 6) && dark(left + 3, top + 3));
        EXPECT_FALSE(dark(left + 1, top + 1) || dark(left + 5, top + 5));
    }
    EXPECT_EQ(qrCodeOf("").side, 0);
    EXPECT_EQ(qrCodeOf(std::string(10'000, 'x')).side, 0);
}

TEST(Png, IsGreyAndAsLargeAsItsPixels) {
    using namespace std::literals;
    EXPECT_THAT(pngOf(3, 2, {0, 0, 255, 255, 0, 0}),
                testing::StartsWith("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\3\0\0\0\2\b\0"s));
}

}  // namespace
}  // namespace vantrel::page
