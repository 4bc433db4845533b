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

TEST_F(Calculator, Calculates) {
    struct Case {
        const char* why;
        const char *focalLength, *unit, *pixelX, *pixelY, *binning;
        const char *scaleX, *scaleY, *focalLengthAfter;
    };
    const Case cases[] = {
        {"millimetres", "2000", "mm", "9", "9", "2", "1.854", "1.854", "2000"},
        {"inches become millimetres", "80", "in", "9", "18", "2", "1.825", "3.65", "2032"},
        {"inches rounded to micrometres", "10.0001", "in", "5", "5", "1", "4.055", "4.055", "254.003"},
        {"three decimals", "530", "mm", "3.8", "3.76", "1", "1.477", "1.461", "530"},
        {"no pixel size", "2000", "mm", "", "9", "2", "unset", "unset", "2000"},
        {"no focal length", "0", "in", "9", "9", "2", "unset", "unset", "0"},
        {"negative", "-5", "mm", "9", "9", "2", "unset", "unset", "-5"},
        {"not a number", "2000", "in", "9 um", "9", "2", "unset", "unset", "2000"},
    };
    window.show();
    for (const Case& c : cases) {
        window.txtFL.setText(c.focalLength);
        window.cmbUnits.setText(c.unit);
        window.txtPixelSizeX.setText(c.pixelX);
        window.txtPixelSizeY.setText(c.pixelY);
        window.cmbCamBin.setText(c.binning);
        window.txtPlateScaleHoriz.setText("unset");
        window.txtPlateScaleVert.setText("unset");
        window.cmdCalculate.click();
        EXPECT_EQ(window.txtPlateScaleHoriz.text(), c.scaleX) << c.why;
        EXPECT_EQ(window.txtPlateScaleVert.text(), c.scaleY) << c.why;
        EXPECT_EQ(window.txtFL.text(), c.focalLengthAfter) << c.why;
        const bool calculated = std::string(c.scaleX) != "unset";
        EXPECT_EQ(window.cmbUnits.text(), calculated ? "mm" : c.unit) << c.why;
        if (calculated) {
            EXPECT_EQ(stored("TelescopeFL"), c.focalLengthAfter) << c.why;
        }
    }
}

TEST_F(Calculator, TakesOnlyTheKeysOfNumbers) {
    window.show();
    for (const char key : std::string("2a,5")) window.txtFL.key(key);
    EXPECT_EQ(window.txtFL.text(), "2.5");
}

}  // namespace
}  // namespace vantrel::platesolve
