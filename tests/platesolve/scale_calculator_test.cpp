#include "platesolve/scale_calculator.h"

#include <gtest/gtest.h>

#include "platesolve/frm_pixel_scale.h"
#include "platesolve/plate_solve_panel.h"
#include "support/memory_settings_port.h"

namespace vantrel::platesolve {
namespace {

class Calculator : public testing::Test {
  protected:
    Calculator() {
        form.show();
        panel.framePP.setVisible(true);
        panel.frameTheSky.setVisible(true);
    }

    std::optional<std::string> stored(const std::string& key) { return settings.root.read("Solve", key); }

    test::MemorySettingsPort settings;
    platform::Screen screen{{0, 0, 1920, 1040}};
    platform::Form form{screen, "frmMain", "", {0, 0, 600, 500}};
    PlateSolvePanel panel{form};
    frmPixelScale window{screen};
    ScaleCalculator calculator{window, panel, settings};
};

TEST_F(Calculator, OpensOnTopAndIsFilledAnewEachTime) {
    EXPECT_TRUE(panel.cmdGetImageScalePP.click());
    EXPECT_TRUE(window.shown());
    EXPECT_TRUE(window.onTop());
    EXPECT_EQ(window.cmbUnits.text(), "mm");
    EXPECT_EQ(window.cmbCamBin.text(), "3");
    EXPECT_EQ(window.txtUnbinnedCCDScaleHoriz.text(), "1.0");
    EXPECT_EQ(window.txtPlateScaleVert.text(), "3.0");

    window.mnuExit.click();
    EXPECT_FALSE(window.shown());
    settings.SaveSetting("Solve", "ScaleH", "2.2");
    settings.SaveSetting("Solve", "CamBin", "1");
    settings.SaveSetting("Solve", "TelescopeFL", "1000");
    EXPECT_TRUE(panel.cmdGetImageScaleTheSky.click());
    EXPECT_EQ(window.txtPlateScaleHoriz.text(), "2.2");
    EXPECT_EQ(window.cmbCamBin.text(), "1");
    EXPECT_EQ(window.txtFL.text(), "1000");
}

TEST_F(Calculator, StoresInputsAtOnceAndResultsNever) {
    window.show();
    window.txtFL.type("530");
    window.txtPixelSizeX.type("3.8");
    window.txtPixelSizeY.type("3.9");
    window.txtUnbinnedCCDScaleHoriz.type("1.5");
    window.txtUnbinnedCCDScaleVert.type("1.6");
    window.cmbUnits.choose("in");
    window.cmbCamBin.choose("1");
    window.txtPlateScaleHoriz.type("9");
    EXPECT_EQ(stored("TelescopeFL"), "530");
    EXPECT_EQ(stored("CameraPixelXSize"), "3.8");
    EXPECT_EQ(stored("CameraPixelYSize"), "3.9");
    EXPECT_EQ(stored("UnbinnedCCDScaleH"), "1.5");
    EXPECT_EQ(stored("UnbinnedCCDScaleV"), "1.6");
    EXPECT_EQ(stored("FocalLengthUnits"), "in");
    EXPECT_EQ(stored("CamBin"), "1");
    EXPECT_EQ(stored("ScaleH"), std::nullopt);
}

TEST_F(Calculator, TakesOnlyTheKeysOfNumbers) {
    window.show();
    for (const char key : std::string("2a,5")) window.txtFL.key(key);
    EXPECT_EQ(window.txtFL.text(), "2.5");
}

}  // namespace
}  // namespace vantrel::platesolve
