// The image-scale calculator through the operator protocol.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script.h"

namespace vantrel::headless {
namespace {

using namespace test;
using testing::ElementsAre;

const Lines kBoxes = {"txtPlateScaleHoriz", "txtPlateScaleVert", "txtFL", "cmbUnits", "txtPixelSizeX"};

void readBoxes(Script& script, const Lines& boxes = kBoxes) {
    for (const std::string& box : boxes) script.read("frmPixelScale." + box);
}
/// What stood in them.
Lines textsOf(const Script::Result& result, const Lines& boxes = kBoxes) {
    Lines all;
    for (const std::string& box : boxes) all.push_back(result.reply("frmPixelScale." + box)["text"]);
    return all;
}

TEST(PixelScale, IsCalculatedFromWhatIsTyped) {
    const struct {
        const char* why;
        const char *focalLength, *unit, *pixelX, *pixelY, *binning;
        const char *scaleX, *scaleY, *focalLengthAfter, *unitAfter;
    } cases[] = {
        {"millimetres", "2000", "mm", "9", "9", "2", "1.854", "1.854", "2000", "mm"},
        {"inches become millimetres", "80", "in", "9", "18", "2", "1.825", "3.65", "2032", "mm"},
        {"rounded to micrometres", "10.0001", "in", "5", "5", "1", "4.055", "4.055", "254.003", "mm"},
        {"a comma", "530", "mm", "3,8", "3.76", "1", "1.477", "1.461", "530", "mm"},
        {"no pixel size", "2000", "in", "", "9", "2", "3.6", "3.6", "2000", "in"},
        {"no height of a pixel", "2000", "mm", "9", "", "2", "3.6", "3.6", "2000", "mm"},
        {"no focal length", "0", "in", "9", "9", "2", "3.6", "3.6", "0", "in"},
        {"negative", "-5", "mm", "9", "9", "2", "3.6", "3.6", "-5", "mm"},
        {"not a number", "2000", "in", "9 um", "9", "2", "3.6", "3.6", "2000", "in"},
        {"not a binning", "2000", "mm", "9", "9", "two", "3.6", "3.6", "2000", "mm"},
    };
    for (const auto& c : cases) {
        Script script;
        script.waitIdle().startLog().click("frmMain.cmdGetImageScale(0)").waitIdle();
        script.type("frmPixelScale.txtFL", c.focalLength).choose("frmPixelScale.cmbUnits", c.unit);
        script.type("frmPixelScale.txtPixelSizeX", c.pixelX).type("frmPixelScale.txtPixelSizeY", c.pixelY);
        script.type("frmPixelScale.cmbCamBin", c.binning).click("frmPixelScale.cmdCalculate").waitIdle();
        readBoxes(script);
        for (const char* key : {"TelescopeFL", "FocalLengthUnits", "CameraPixelYSize", "CamBin", "ScaleH"})
            script.readSetting("Solve", key);
        const auto result = script.run();
        const auto stored = [&](const char* key) { return result.read.at(key)["value"]; };
        EXPECT_THAT(textsOf(result),
                    ElementsAre(c.scaleX, c.scaleY, c.focalLengthAfter, c.unitAfter, c.pixelX))
            << c.why;
        EXPECT_EQ(stored("TelescopeFL"), c.focalLengthAfter) << c.why;
        EXPECT_EQ(stored("FocalLengthUnits"), c.unitAfter) << c.why;
        EXPECT_EQ(stored("CameraPixelYSize"), c.pixelY == std::string() ? json() : c.pixelY) << c.why;
        EXPECT_EQ(stored("CamBin"), c.binning) << c.why;
        EXPECT_EQ(stored("ScaleH"), "3.6") << c.why << ": the solver's scale is the operator's to change";
        EXPECT_TRUE(result.log.empty() && result.popups.empty()) << c.why;
    }
}

TEST(PixelScale, IsRecomputedEverySecondAndLeavesAloneWhatIsTyped) {
    const struct {
        const char* why;
        const char *focalLength, *unit, *pixelX;
        const char *scaleX, *scaleY;
    } cases[] = {
        {"millimetres", "2000", "mm", "9", "1.854", "1.236"},
        {"inches stay inches", "80", "in", "9", "1.825", "1.217"},
        {"nothing to compute from yet", "", "mm", "9", "3.6", "3.6"},
        {"half typed", "2000", "mm", "9.", "1.854", "1.236"},
    };
    for (const auto& c : cases) {
        Script script;
        script.setting("Solve", "CamBin", "2");
        script.waitIdle().click("frmMain.cmdGetImageScale(0)").waitIdle();
        script.type("frmPixelScale.txtPixelSizeX", c.pixelX).type("frmPixelScale.txtPixelSizeY", "6");
        script.type("frmPixelScale.txtFL", c.focalLength).choose("frmPixelScale.cmbUnits", c.unit);
        script.advance(1.5);
        readBoxes(script);
        // A scale that the operator types instead stays until something changes that it is computed from.
        script.type("frmPixelScale.txtPlateScaleVert", "7.").advance(2);
        script.read("frmPixelScale.txtPlateScaleVert", "typed");
        script.type("frmPixelScale.txtFL", "1000").choose("frmPixelScale.cmbUnits", "mm").advance(1.5);
        script.read("frmPixelScale.txtPlateScaleVert", "changed");
        const auto result = script.run();
        EXPECT_THAT(textsOf(result), ElementsAre(c.scaleX, c.scaleY, c.focalLength, c.unit, c.pixelX))
            << c.why;
        EXPECT_EQ(result.read.at("typed")["text"], "7.") << c.why;
        EXPECT_EQ(result.read.at("changed")["text"], "2.472") << c.why;
    }
}

TEST(PixelScale, WindowStaysOnTopAndComesBackAsItWasLeft) {
    Script script;
    script.setting("PolarAlign", "PlateSolveMethod", "1").setting("Solve", "CamBin", "1");
    script.setting("PolarAlign", "ImagingSoftware", "CCDSoft");  // the other one has no image link
    script.waitIdle().click("frmMain.cmdGetImageScale(1)").type("frmPixelScale.txtFL", "530");
    script.choose("frmPixelScale.cmbCamBin", "4").send({{"id", "open"}, {"do", "windows"}});
    script.type("frmPixelScale.txtPlateScaleHoriz", "9").click("frmPixelScale.mnuExit").waitIdle();
    script.send({{"id", "closed"}, {"do", "windows"}});
    script.click("frmMain.cmdGetImageScale(1)").waitIdle();
    const Lines boxes = {"txtFL", "cmbUnits", "cmbCamBin", "txtUnbinnedCCDScaleVert", "txtPlateScaleHoriz"};
    readBoxes(script, boxes);
    for (const char* key : {"FocalLengthUnits", "UnbinnedCCDScaleH"}) script.readSetting("Solve", key);
    const auto result = script.run();
    for (const char* key : {"FocalLengthUnits", "UnbinnedCCDScaleH"})
        EXPECT_EQ(result.read.at(key)["value"], json()) << key << " is stored by opening the window";

    const auto window = [&](const char* when) {
        for (const json& shown : result.read.at(when)["windows"])
            if (shown["form"] == "frmPixelScale") return shown;
        return json();
    };
    EXPECT_EQ(window("open")["onTop"], true);
    EXPECT_EQ(window("open")["title"], "Pixel Scale Calculator");
    EXPECT_EQ(window("closed"), json());
    EXPECT_THAT(textsOf(result, boxes), ElementsAre("530", "mm", "4", "1.0", "3.6"))
        << "the last is the solver's";
}

}  // namespace
}  // namespace vantrel::headless
