#include "platform/words.h"

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

/// A language that speaks English loudly and the other way round.
std::string loudly(const std::string& pattern) {
    if (pattern == "%1 of %2") return "%2 HAS %1";
    if (pattern == "star") return "STAR";
    return pattern;
}

TEST(Words, ArePutTogetherInAnyLanguage) {
    const Words star = Words::tr("star");
    const struct {
        const char* why;
        Words words;
        const char* english;
        const char* loud;
    } cases[] = {
        {"nothing", Words(), "", ""},
        {"a name, which only looks like a text of our own", "star", "star", "star"},
        {"a text of our own", star, "star", "STAR"},
        {"figures", Words::tr("%1 of %2", {"3", "9"}), "3 of 9", "9 HAS 3"},
        {"parts of our own", Words::tr("%1 of %2", {star, "star"}), "star of star", "star HAS STAR"},
        {"parts that look like places", Words::tr("%1 of %2", {"%2", "%1"}), "%2 of %1", "%1 HAS %2"},
        {"a pattern that isn't known", Words::tr("%2%1%2", {"a", star}), "starastar", "STARaSTAR"},
        {"a part too few", Words::tr("%1 of %2", {"3"}), "3 of %2", "%2 HAS 3"},
        {"a part too many", Words::tr("star", {"3"}), "star", "STAR"},
        {"no places", Words::tr("%0 %a 100 % %", {"3"}), "%0 %a 100 % %", "%0 %a 100 % %"},
        {"no pattern", Words::tr("", {"3"}), "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.words.english(), c.english) << c.why;
        EXPECT_EQ(c.words.in(loudly), c.loud) << c.why;
        EXPECT_EQ(c.words.empty(), c.words.english().empty()) << c.why;
    }
}

}  // namespace
}  // namespace vantrel::platform
