#include "platform/form.h"

#include <cmath>

#include <gtest/gtest.h>

#include "platform/key_filters.h"
#include "platform/place_form.h"

namespace vantrel::platform {
namespace {

struct FormTest : testing::Test {
    Screen screen{{0, 0, 800, 600}};
    Form form{screen, "frmOne", "One", {10, 10, 100, 100}};
    int changes = 0;
    int clicks = 0;
};

TEST_F(FormTest, OnlyWhatCanBeReachedTakesTheOperatorsHands) {
    Frame outer(form, "outer", ""), inner(form, "inner", "");
    Button button(form, "cmdGo", "Go");
    inner.placeIn(outer);
    button.placeIn(inner);
    button.onClick = [&] { ++clicks; };
    EXPECT_FALSE(button.click()) << "the window isn't shown";
    form.show();
    EXPECT_TRUE(button.click());
    const struct {
        const char* why;
        std::function<void(bool)> set;
    } cases[] = {
        {"disabled", [&](bool on) { button.setEnabled(on); }},
        {"hidden", [&](bool on) { button.setVisible(on); }},
        {"in a hidden frame", [&](bool on) { inner.setVisible(on); }},
        {"in a frame in a hidden frame", [&](bool on) { outer.setVisible(on); }},
    };
    for (const auto& c : cases) {
        c.set(false);
        EXPECT_FALSE(button.click()) << c.why;
        c.set(true);
    }
    EXPECT_EQ(clicks, 1);
    button.setEnabled(false);
    button.press();
    EXPECT_EQ(clicks, 2) << "code presses what it likes";
}

TEST_F(FormTest, SettersTellOnlyRealChangesAndOnce) {
    TextBox box(form, "txtOne", "a");
    box.onChange = [&] { ++changes; };
    box.setText("a");
    EXPECT_EQ(changes, 0);
    box.setText("b");
    form.show();
    EXPECT_TRUE(box.type("c"));
    EXPECT_TRUE(box.type("c"));
    EXPECT_EQ(changes, 2);
    box.setReadOnly(true);
    EXPECT_FALSE(box.type("d"));
    EXPECT_EQ(box.text(), "c");
}

TEST_F(FormTest, KeysAreAppendedFilteredOrTakeAway) {
    TextBox box(form, "txtOne", "5");
    form.show();
    box.keyFilter = [](int code) { return code == 'x' ? 0 : code == ',' ? '.' : code; };
    for (int code : {int{'x'}, int{','}, 0xE4, 0x20AC, 13, 8}) EXPECT_TRUE(box.key(code));
    EXPECT_EQ(box.text(), "5.\xC3\xA4");
    for (int i = 0; i < 5; ++i) box.key(8);
    EXPECT_EQ(box.text(), "");
}

TEST_F(FormTest, OptionsExcludeEachOtherAndAllClickWhenTheyChange) {
    OptionGroup group;
    OptionButton east(form, group, "optEast", ""), west(form, group, "optWest", "");
    CheckBox box(form, "chkOne", "");
    west.onClick = box.onClick = [&] { ++clicks; };
    form.show();
    east.select();
    EXPECT_TRUE(west.click());
    EXPECT_TRUE(west.click());
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(east.selected());
    EXPECT_TRUE(west.selected());
    box.check(1);
    box.setValue(7);
    EXPECT_EQ(clicks, 2);
    box.click();
    EXPECT_EQ(box.value(), 0);
    EXPECT_EQ(clicks, 3);
}

TEST_F(FormTest, ListsAreChosenFromByTheirEntries) {
    ComboBox list(form, "cmbOne");
    list.setItems({{"GSC", 3}, {"USNO", 4}});
    list.onClick = [&] { ++clicks; };
    list.onChange = [&] { ++changes; };
    form.show();
    EXPECT_FALSE(list.choose("UCAC"));
    EXPECT_EQ(list.chosen(), nullptr);
    EXPECT_TRUE(list.choose("USNO"));
    EXPECT_EQ(list.chosen()->data, 4);
    EXPECT_EQ(list.text(), "USNO");
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(changes, 0);
}

TEST_F(FormTest, GaugesKeepToTheirRangeAndTellVisibleStepsOnly) {
    Gauge gauge(form, "gauge");
    const auto told = gauge.changed.subscribe([&] { ++changes; });
    for (const double nothing : {-1.0, std::nan(""), 0.0004}) {
        gauge.setFraction(nothing);
        EXPECT_EQ(gauge.fraction(), 0);
    }
    EXPECT_EQ(changes, 0);
    gauge.setFraction(0.5);
    gauge.setFraction(0.5002);
    EXPECT_EQ(changes, 1);
    gauge.setFraction(7);
    EXPECT_EQ(gauge.fraction(), 1);
}

TEST_F(FormTest, WindowsLoadOnceActivateInTurnAndLoadAgainAfterUnloading) {
    std::vector<std::string> story;
    Form other(screen, "frmTwo", "Two", {});
    form.onLoad = [&] { story.emplace_back("load"); };
    form.onActivate = [&] { story.emplace_back("activate"); };
    form.onDeactivate = [&] { story.emplace_back("deactivate"); };
    form.onUnload = [&] { story.emplace_back("unload"); };
    form.show();
    form.show();
    other.show();
    form.activate();
    form.closeByOperator();
    form.unload();
    form.show();
    EXPECT_EQ(story, (std::vector<std::string>{"load", "activate", "deactivate", "activate", "unload", "load",
                                               "activate"}));
    EXPECT_EQ(screen.shownForms(), (std::vector<Form*>{&other, &form}));
}

TEST_F(FormTest, AWindowMayDecideAgainstBeingShownOrClosed) {
    form.onLoad = [&] { form.unload(); };
    form.show();
    EXPECT_FALSE(form.shown());
    form.onLoad = nullptr;
    form.show();
    form.onClose = [] {};
    form.closeByOperator();
    EXPECT_TRUE(form.shown());
}

TEST_F(FormTest, ControlsAreFoundByNameWhateverTheCase) {
    Button button(form, "optSide(1)", "");
    EXPECT_EQ(screen.findControl("FRMone.OPTside(1)"), &button);
    for (const char* path : {"optSide(1)", "frmOne.", "frmOne.optSide", "frmTwo.optSide(1)", ""})
        EXPECT_EQ(screen.findControl(path), nullptr) << path;
}

// ---- key filters

TEST(KeyFilters, LetThroughWhatANumberNeeds) {
    const struct {
        int code;
        int whole, decimal;
    } rows[] = {
        {8, 8, 8},     {13, 13, 13},  {'#', '#', '#'}, {'0', '0', '0'}, {'9', '9', '9'},
        {'.', 0, '.'}, {',', 0, '.'}, {'-', 0, 0},     {'/', 0, 0},     {':', 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(wholeNumberKey(row.code), row.whole) << row.code;
        EXPECT_EQ(decimalNumberKey(row.code), row.decimal) << row.code;
    }
}

// ---- place form

TEST(PlaceForm, BringsBackAWindowWhoseMiddleIsOutside) {
    const Rectangle area{100, 50, 1000, 600};
    struct Case {
        const char* why;
        double top, left;
        int newTop, newLeft;
    };
    for (const Case& c : {
             Case{"less than half outside stays", 10, 5, 10, 5},
             Case{"beyond the upper left corner", -300, -900, 50, 100},
             Case{"more than half beyond the right and lower edge", 601, 1001, 550, 900},
             Case{"exactly half outside stays", 600, 1000, 600, 1000},
             Case{"fractions are rounded", 60.6, 200.4, 61, 200},
             Case{"stored nonsense", 1e300, -1e300, 550, 100},
             Case{"no number at all", std::nan(""), std::nan(""), 0, 0},
         }) {
        Screen screen(area);
        Form form(screen, "frm", "", {0, 0, 200, 100});
        PlaceFormOnScreen(form, c.top, c.left);
        EXPECT_EQ(form.place().top, c.newTop) << c.why;
        EXPECT_EQ(form.place().left, c.newLeft) << c.why;
        EXPECT_EQ(form.place().width, 200) << c.why;
    }
    // Of a window that is too large the upper left corner is shown.
    EXPECT_EQ(keptOnScreen({500, 400, 900, 900}, {0, 0, 640, 480}), (Rectangle{0, 0, 900, 900}));
}

}  // namespace
}  // namespace vantrel::platform
