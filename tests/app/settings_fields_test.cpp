#include "app/settings_fields.h"

#include <functional>

#include <gtest/gtest.h>

#include "support/app_world.h"

namespace vantrel::app {
namespace {

using platform::CheckBox;
using platform::ComboBox;
using platform::Control;
using platform::OptionButton;
using platform::TextBox;

struct SettingsFieldsTest : testing::Test, test::AppWorld {
    frmMain form{screen};
    test::RecordingLog log;
    SettingsFields fields{form, settings, log, state};

    void SetUp() override { form.show(); }

    template <typename Kind>
    Kind& control(const std::string& name) {
        auto* found = dynamic_cast<Kind*>(form.find(name));
        if (found == nullptr) throw std::logic_error("no such control: " + name);
        return *found;
    }
    std::string shown(const std::string& name) {
        Control* found = form.find(name);
        if (const auto* box = dynamic_cast<TextBox*>(found)) return box->text();
        if (const auto* list = dynamic_cast<ComboBox*>(found)) return list->text();
        if (const auto* box = dynamic_cast<CheckBox*>(found)) return std::to_string(box->value());
        return control<OptionButton>(name).selected() ? "True" : "False";
    }
    void operate(const std::string& name, const std::string& text) {
        Control* found = form.find(name);
        if (auto* box = dynamic_cast<TextBox*>(found)) box->type(text);
        if (auto* list = dynamic_cast<ComboBox*>(found)) list->choose(text);
        if (auto* box = dynamic_cast<CheckBox*>(found)) box->check(text == "1" ? 1 : 0);
        if (dynamic_cast<OptionButton*>(found) != nullptr) control<OptionButton>("optSlewWest").click();
    }
};

struct Row {
    const char* section;
    const char* key;
    const char* control;
    const char* usual;  // shown when nothing is stored
    const char* other;  // another value
    bool onChange;      // stored as soon as the operator changes it
    bool onLeave;       // stored when the operator leaves it
    bool atEnd;         // stored with all others
};

const Row kRows[] = {
    {"PolarAlign", "DeltaRA", "txtDeltaRA", "5", "15", true, false, false},
    {"PolarAlign", "DelayAfterSlew", "txtDelayAfterSlew", "5", "7", false, true, true},
    {"PolarAlign", "ExposeContinuousEnable", "chkExposeContinuousEnable", "0", "1", true, false, true},
    {"PolarAlign", "ContinuousExposeDelay", "txtContinuousExposeDelay", "0", "2", true, true, true},
    {"PolarAlign", "ContinuousExposeInterval", "txtContinuousExposeInterval", "1", "3", true, false, true},
    {"PolarAlign", "PostExpDelay", "txtPostExpDelay", "0", "4", false, false, true},
    {"PolarAlign", "CrossHairEnable", "chkCrossHairEnable", "0", "1", false, false, true},
    {"PolarAlign", "CrossHairWidth", "cmbCrossHairWidth", "1", "3", true, false, true},
    {"PolarAlign", "UseCCDSoftSubFrame", "chkUseCCDSoftSubFrame", "0", "1", false, false, true},
    {"PolarAlign", "ImagePath", "txtImagePath", "C:\\", "D:\\Images", false, false, true},
    {"PolarAlign", "SaveImages", "chkSaveImages", "0", "1", false, false, true},
    {"Solve", "ExposeInterval", "txtExposeInterval", "10", "2.5", true, false, true},
    {"Main", "SlewEast", "optSlewEast", "True", "False", true, false, false},
};

TEST_F(SettingsFieldsTest, EveryFieldIsReadAndStoredAsTheTableSays) {
    fields.read();
    for (const Row& row : kRows) EXPECT_EQ(shown(row.control), row.usual) << row.key;
    EXPECT_TRUE(state.SlewEast);

    for (const Row& row : kRows) {
        const auto stored = [&] { return memory.read(row.section, row.key); };
        const auto other = std::optional<std::string>(row.other);
        memory.remove(row.section, row.key);
        operate(row.control, row.other);
        EXPECT_EQ(stored() == other, row.onChange) << row.key;
        memory.remove(row.section, row.key);
        form.find(row.control)->leave();
        EXPECT_EQ(stored() == other, row.onLeave) << row.key;
        memory.remove(row.section, row.key);
        fields.store();
        EXPECT_EQ(stored() == other, row.atEnd) << row.key;
    }
    EXPECT_FALSE(state.SlewEast);
    EXPECT_EQ(std::size(kRows), fields.table().size()) << "every field has its row here";
}

TEST_F(SettingsFieldsTest, EveryFieldShowsWhatIsStored) {
    for (const Row& row : kRows) memory.write(row.section, row.key, row.other);
    fields.read();
    for (const Row& row : kRows) EXPECT_EQ(shown(row.control), row.other) << row.key;
    EXPECT_FALSE(state.SlewEast);
}

TEST_F(SettingsFieldsTest, TheImagingProgramIsStoredOnlyWhenOneIsChosen) {
    memory.write("PolarAlign", "ImagingSoftware", "as it was");
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagingSoftware"), "as it was");
    form.imaging.optMaxIm.select();
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagingSoftware"), "MaxIm");
    form.imaging.optCCDSoft.select();
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagingSoftware"), "CCDSoft");
}

TEST_F(SettingsFieldsTest, AnEmptyImageFolderIsStoredAsTheDrive) {
    form.setup.txtImagePath.setText("");
    fields.store();
    EXPECT_EQ(memory.read("PolarAlign", "ImagePath"), "C:");
}

TEST_F(SettingsFieldsTest, AnEmptySlewBecomesZero) {
    form.run.txtDeltaRA.type("");
    EXPECT_EQ(form.run.txtDeltaRA.text(), "0");
    EXPECT_EQ(memory.read("PolarAlign", "DeltaRA"), "0");
}

TEST_F(SettingsFieldsTest, KeysOfTheNumericBoxes) {
    const struct {
        const char* control;
        const char* typed;
        const char* text;
    } rows[] = {
        {"txtDeltaRA", "1a2.3,#-4", "123#4"},    {"txtExposeInterval", "1a2.3#", "12.3#"},
        {"txtExposeInterval", "0,5\r", "0.5"},   {"txtDelayAfterSlew", "x7\b8", "8"},
        {"txtContinuousExposeDelay", "-1", "1"}, {"txtContinuousExposeInterval", "e2", "2"},
        {"txtPostExpDelay", "a-1,5", "a-1,5"},
    };
    for (const auto& row : rows) {
        auto& box = control<TextBox>(row.control);
        box.setText(box.name() == "txtDeltaRA" ? "0" : "");
        if (box.name() == "txtDeltaRA") box.key(8);  // an empty slew would become zero
        const std::string before = box.text();
        for (const char* key = row.typed; *key != '\0'; ++key) box.key(*key);
        EXPECT_EQ(box.text(), before + row.text) << row.control;
    }
}

TEST_F(SettingsFieldsTest, APostExposureDelayThatIsNoNumberBecomesZero) {
    form.run.txtPostExpDelay.type("1.5");
    form.run.txtPostExpDelay.leave();
    EXPECT_EQ(form.run.txtPostExpDelay.text(), "1.5");
    EXPECT_TRUE(log.lines.empty());
    form.run.txtPostExpDelay.type("soon");
    form.run.txtPostExpDelay.leave();
    EXPECT_EQ(form.run.txtPostExpDelay.text(), "0");
    EXPECT_EQ(log.lines, std::vector<std::string>{"Post exposure delay is not numeric, setting to 0"});
}

TEST_F(SettingsFieldsTest, TheLineWidthStaysAvailableHoweverTheCrossHairIsSet) {
    auto& width = form.exposures.cmbCrossHairWidth;
    for (const int ticked : {1, 0}) {
        width.setEnabled(false);
        form.exposures.chkCrossHairEnable.check(ticked);
        EXPECT_TRUE(width.enabled());
    }
}

TEST_F(SettingsFieldsTest, FieldsStillEmptyAfterTheStartGetSomethingToWorkWith) {
    form.run.txtDelayAfterSlew.setText("");
    form.exposures.txtContinuousExposeDelay.setText("");
    form.exposures.txtContinuousExposeInterval.setText("");
    fields.fillEmptyFields();
    EXPECT_EQ(form.run.txtDelayAfterSlew.text(), "0");
    EXPECT_EQ(form.exposures.txtContinuousExposeDelay.text(), "0");
    EXPECT_EQ(form.exposures.txtContinuousExposeInterval.text(), "1");
}

}  // namespace
}  // namespace vantrel::app
