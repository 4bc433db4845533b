// Whatever the operator writes into any box of any window, and whatever becomes of folders, clocks, locale
// and time zone: the program goes on, and so does the next start.

#include <filesystem>
#include <fstream>
#include <locale>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "faults/night.h"
#include "support/time_zone.h"

namespace vantrel::faults {
namespace {

constexpr const Equipment& kEquipment = kSetUps[1];

template <typename... Texts>
std::vector<std::string> all(const Texts&... texts) {
    return {texts...};
}

TEST(Input, EveryTextInEveryBoxIsSurvived) {
    const std::vector<std::string> texts =
        all("", std::string(1'000'000, '7'), "abc", "\xce\xb1\xc2\xb5\xe2\x82\xac\xf0\x9f\x94\xad", "1,5",
            "NaN", "inf", "-0", "1e308", "-1e308", "1e-320", "  12  ", "\xff\xfe", std::string("1\0002", 3),
            "99999999999", "C:\\", "../../x\r\ny\tz");
    const std::vector<std::string> boxes = Night(kEquipment).boxes();
    ASSERT_GT(boxes.size(), 30U);
    for (const std::string& box : boxes)
        for (const std::string& text : texts) {
            const Outcome outcome = Night(kEquipment).spendWith(box, text);
            for (const std::string& defect : outcome.defects)
                ADD_FAILURE() << box << " with \"" << text.substr(0, 20) << "\": " << defect;
            // A delay is as long as it was written; closing the program ends it.
            EXPECT_TRUE(!outcome.hung || box.find("Delay") != std::string::npos)
                << box << " with \"" << text.substr(0, 20) << "\"";
        }
}

constexpr Activity kWork[] = {Activity::kMeasurement, Activity::kSeries, Activity::kCorrection,
                              Activity::kSolve};

void expectNoDefects(const Outcome& outcome, const std::string& why) {
    EXPECT_THAT(outcome.defects, testing::IsEmpty()) << why;
    EXPECT_FALSE(outcome.hung) << why;
}

TEST(Surroundings, FoldersMayVanish) {
    for (const char* folder : {"Vantrel", "Message Logs"})
        for (const bool fileInstead : {false, true})
            for (const Activity activity : kWork) {
                Night night(kEquipment);
                std::filesystem::path gone;
                night.onBegin = [&] {
                    for (const auto& entry : std::filesystem::recursive_directory_iterator(night.home()))
                        if (entry.path().filename() == folder) gone = entry.path();
                    std::filesystem::rename(gone, gone.string() + ".away");
                    if (fileInstead) std::ofstream(gone) << "no folder";
                };
                night.onRepair = [&] {
                    std::filesystem::remove_all(gone);
                    std::filesystem::rename(gone.string() + ".away", gone);
                };
                const std::string why = std::string(folder) + ", " + nameOf(activity);
                const Outcome outcome = night.spend(activity, std::nullopt);
                expectNoDefects(outcome, why);
                const bool saves = activity == Activity::kMeasurement || activity == Activity::kSolve;
                if (saves && std::string(folder) == "Vantrel") {
                    EXPECT_THAT(outcome.said, testing::Contains(testing::HasSubstr("Error"))) << why;
                }
            }
}

TEST(Surroundings, ClocksMayJump) {
    for (const Activity activity : kWork) {
        const Outcome calm = Night(kEquipment).spend(activity, std::nullopt);
        for (const int hours : {-24, -1, 1, 24}) {
            Night night(kEquipment);
            int turns = 0;
            night.onTurn = [&] {
                if (++turns == 5) night.setClockWrongBy(std::chrono::hours{hours});
            };
            const Outcome outcome = night.spend(activity, std::nullopt);
            const std::string why = std::string(nameOf(activity)) + " " + std::to_string(hours);
            expectNoDefects(outcome, why);
            EXPECT_GE(turns, 5) << why;
            EXPECT_EQ(outcome.said, calm.said) << why;
        }
    }
}

/// What a measurement and a correction say, and all that is stored afterwards.
std::vector<std::string> traceOfANight() {
    Night night(kEquipment);
    std::vector<std::string> trace = night.spend(Activity::kCorrection, std::nullopt).said;
    for (const auto& [name, entry] : night.settings().entries())
        trace.push_back(entry.section + "." + entry.key + "=" + entry.value);
    return trace;
}

struct GermanNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(Surroundings, LocalesAndTimeZonesChangeNoLineAndNoSetting) {
    const std::vector<std::string> expected = traceOfANight();
    const std::locale before = std::locale::global(std::locale(std::locale(), new GermanNumbers));
    EXPECT_EQ(traceOfANight(), expected) << "comma";
    std::locale::global(before);

    // The last one's clock counts leap seconds.
    for (const char* other : {"UTC", "NPT-5:45", "<+14>-14", "<-12>12", "no zone at all", "right/UTC"}) {
        const test::TimeZone there(other);
        EXPECT_EQ(traceOfANight(), expected) << other;
    }
}

}  // namespace
}  // namespace vantrel::faults
