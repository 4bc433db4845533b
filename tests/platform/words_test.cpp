#include "platform/words.h"

#include <gtest/gtest.h>

#include "platform/automation.h"
#include "platform/form.h"

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
        {"no places", Words::tr("%0 %a 100 % %", {"3"}), "%0 %a 100 % %", "%0 %a 100 % %"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.words.english(), c.english) << c.why;
        EXPECT_EQ(c.words.in(loudly), c.loud) << c.why;
        EXPECT_EQ(c.words.empty(), c.words.english().empty()) << c.why;
    }
}

TEST(Words, AreReadInEnglishFromControls) {
    Screen screen{{}};
    Form form(screen, "frmOne", Words::tr("star"), {});
    Label label(form, "lblOne", "star");
    int changes = 0;
    const Subscription changed = label.changed.subscribe([&] { ++changes; });
    label.setCaption(Words::tr("star"));
    label.setCaption(Words::tr("star"));
    EXPECT_EQ(changes, 1) << "windows may show it otherwise now";
    label.setToolTip(Words::tr("%1 of %2", {"3", "9"}));
    EXPECT_EQ(form.title() + ", " + label.caption() + ", " + label.toolTip(), "star, star, 3 of 9");
    ComboBox list(form, "cmbOne");
    list.addItem(Words::tr("star"));
    form.show();
    EXPECT_TRUE(list.choose("star"));
    EXPECT_EQ(list.textWords(), Words::tr("star"));
}

TEST(Words, TravelWithTheirEnglishText) {
    const Value value = Words::tr("star");
    EXPECT_EQ(value, Value("star"));
    EXPECT_EQ(value.toText(), "star");
    EXPECT_EQ(Value(value).toWords(), Words::tr("star"));
    EXPECT_EQ(Value("star").toWords(), Words("star"));
    EXPECT_EQ(Value(3).toWords(), Words("3"));
}

}  // namespace
}  // namespace vantrel::platform
