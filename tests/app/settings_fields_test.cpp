#include "app/settings_fields.h"

#include <gtest/gtest.h>

#include "support/app_world.h"

namespace vantrel::app {
namespace {

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
