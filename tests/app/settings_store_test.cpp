#include "app/settings_store.h"

#include <gtest/gtest.h>

#include "app/settings_fields.h"
#include "support/app_world.h"
#include "support/full_disk.h"
#include "support/recording_dialogs.h"

namespace vantrel::app {
namespace {

using platform::Dialogs;
using platform::MemorySettings;
using test::RecordingDialogs;

struct SettingsStoreTest : testing::Test {
    MemorySettings memory;
    RecordingDialogs dialogs;
    SettingsStore store{memory, dialogs};
};

TEST_F(SettingsStoreTest, ReadingAMissingValueGivesTheDefaultAndStoresNothing) {
    EXPECT_EQ(store.GetSetting("Nowhere", "Key", "default"), "default");
    EXPECT_TRUE(memory.isEmpty());
}

TEST_F(SettingsStoreTest, ReadingAMissingOrEmptyMainValueStoresTheDefault) {
    store.SaveMainSetting("Empty", "");
    EXPECT_EQ(store.GetMainSetting("Missing", "1"), "1");
    EXPECT_EQ(store.GetMainSetting("Empty", "2"), "2");
    EXPECT_EQ(memory.read("Main", "Missing"), "1");
    EXPECT_EQ(memory.read("Main", "Empty"), "2");
    EXPECT_EQ(store.GetMainSetting("missing", "other"), "1");
}

TEST_F(SettingsStoreTest, ReadsWhatTheBufferHolds) {
    const std::string degree = "\xC2\xB0";
    std::string degrees;
    for (int i = 0; i < 1024; ++i) degrees += degree;
    const struct {
        const char* why;
        std::string stored, read;
    } rows[] = {
        {"an empty value exists", "", ""},
        {"as long as the buffer", std::string(1023, 'x'), std::string(1023, 'x')},
        {"longer than the buffer", std::string(1024, 'x'), std::string(1023, 'x')},
        {"characters count, not bytes", degrees, degrees.substr(0, 2 * 1023)},
        {"a NUL at the end", std::string("text\0", 5), "text"},
        {"only one NUL is dropped", std::string("text\0\0", 6), std::string("text\0", 5)},
    };
    for (const auto& row : rows) {
        store.SaveSetting("Solve", "Key", row.stored);
        EXPECT_EQ(store.GetSetting("Solve", "Key", "default"), row.read) << row.why;
    }
}

TEST(SettingsStoreFailures, ShowTheirBoxAndEndTheProgram) {
    const struct {
        const char* why;
        bool failsToOpen;
        const char* section;
        const char* text;
        Dialogs::Icon icon;
    } rows[] = {
        {"no root", true, "Main", "Failed to open/create root registry key (5)", Dialogs::Icon::kCritical},
        {"no section", false, "Solve", "Failed to open/create section key Solve.",
         Dialogs::Icon::kExclamation},
        {"no value", false, "Main", "Failed to write config value Key to registry section Main.",
         Dialogs::Icon::kCritical},
    };
    for (const auto& row : rows) {
        test::FullDisk root;
        root.write("Main", "Other", "there");
        root.full = true;
        root.missing = row.failsToOpen;
        RecordingDialogs dialogs;
        SettingsStore store(root, dialogs);
        int ends = 0;
        store.onFailure = [&] { ++ends; };

        EXPECT_THROW(store.SaveSetting(row.section, "Key", "1"), SettingsFailure) << row.why;
        EXPECT_THROW(store.SaveSetting(row.section, "Key", "1"), SettingsFailure) << row.why;

        ASSERT_EQ(dialogs.boxes.size(), 1u) << row.why;
        EXPECT_EQ(dialogs.boxes[0].title, "");
        EXPECT_EQ(dialogs.boxes[0].text, row.text);
        EXPECT_EQ(dialogs.boxes[0].icon, row.icon) << row.why;
        EXPECT_EQ(ends, 1) << row.why;
    }
}

// ---- settings fields

struct SettingsFieldsTest : testing::Test, test::AppWorld {
    frmMain form{screen};
    test::RecordingLog log;
    SettingsFields fields{form, settings, log, state};

    void SetUp() override { form.show(); }
};

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

TEST_F(SettingsFieldsTest, TheDirectionOfTheSlewsFollowsItsOptions) {
    form.run.optSlewWest.click();
    EXPECT_FALSE(state.SlewEast);
    form.run.optSlewEast.click();
    EXPECT_TRUE(state.SlewEast);
}

TEST_F(SettingsFieldsTest, AnEmptySlewBecomesZero) {
    form.run.txtDeltaRA.type("");
    EXPECT_EQ(form.run.txtDeltaRA.text(), "0");
    EXPECT_EQ(memory.read("PolarAlign", "DeltaRA"), "0");
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
