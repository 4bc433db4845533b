// The imaging programs through the operator protocol: exposures, marks, files and whole nights.

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fits/fits_image.h"
#include "platform/text.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using namespace test;
using platform::joinLines;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kMaxIm = "MaxIm.CCDCamera";
constexpr const char* kDocument = "MaxIm.Document";

/// A mount, PinPoint, and the imaging program that is stored, or open; with a small camera.
Script nightWith(const char* program) {
    Script script;
    script.setting("Main", "MyTelescopeID", "ScopeSim.Telescope").setting("Solve", "CamBin", "2");
    if (std::string(program) != "MaxIm") script.setting("PolarAlign", "ImagingSoftware", program);
    script.waitIdle();
    script.put("AxisSimulator.Telescope", "CameraWidth", 96)
        .put("AxisSimulator.Telescope", "CameraHeight", 64);
    return script;
}

TEST(ManualExposures, SeriesRunUntilTheyAreStopped) {
    Script script = nightWith("MaxIm");
    script.journal(kMaxIm, "before").click("frmMain.cmdExpose").waitIdle().journal(kMaxIm, "single");
    script.check("frmMain.chkExposeContinuousEnable", 1).check("frmMain.chkCrossHairEnable", 1);
    script.type("frmMain.txtContinuousExposeDelay", "abc").click("frmMain.cmdExpose").advance(4.5);
    for (const char* button : {"cmdRun", "cmdStop", "cmdNext", "cmdSkip"})
        script.read(std::string("frmMain.") + button, button);
    script.read("frmMain.cmdExpose", "running").click("frmMain.cmdExpose");
    script.read("frmMain.cmdExpose", "stopping").waitIdle().journal(kMaxIm, "series");
    script.read("frmMain.cmdExpose", "idle").journal(kDocument, "marks");
    script.check("frmMain.chkCrossHairEnable", 0).read("frmMain.cmbCrossHairWidth", "width");
    const auto result = script.run();
    EXPECT_EQ(result.times("single", "call Expose 1.0 1 0"), 1);
    EXPECT_EQ(result.times("series", "call Expose 1.0 1 0"), 4) << "of 1.1 s, with 0.1 s between them";
    for (const char* button : {"cmdRun", "cmdStop", "cmdNext", "cmdSkip"})
        EXPECT_EQ(result.reply(button)["enabled"], false) << button;
    EXPECT_EQ(result.reply("running")["caption"], "Stop Expose");
    EXPECT_EQ(result.reply("stopping")["caption"], "Stoping Exp.");
    EXPECT_EQ(result.reply("idle")["caption"], "Expose");
    EXPECT_EQ(result.reply("width")["enabled"], true);
    EXPECT_EQ(result.times("marks", R"(put ImageArray {"height":32,"width":48})"), 4);
}

// ---- whole nights

TEST(WholeNights, MeasureAndCorrectWithEveryProgramAndSolver) {
    const struct {
        const char* why;
        const char* driver;
        const char* program;
        const char* method;  // 0: PinPoint, 1: image link
        const char* binning;
        const char* scale;
        double azimuth, elevation;  // error of the axis, arc-minutes
    } cases[] = {
        {"simulator", "AxisSimulator.Telescope", "MaxIm", "0", "1", "3.6", 8, -6},
        {"first program", "ScopeSim.Telescope", "MaxIm", "0", "2", "7.2", 0, 0},
        {"second program", "ScopeSim.Telescope", "CCDSoft", "0", "2", "7.2", 0, 0},
        {"image link", "ScopeSim.Telescope", "CCDSoft", "1", "2", "7.2", 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script;
        script.setting("Main", "MyTelescopeID", c.driver).setting("PolarAlign", "PlateSolveMethod", c.method);
        script.setting("PolarAlign", "ImagingSoftware", c.program).setting("Solve", "CamBin", c.binning);
        for (const char* key : {"ScaleH", "ScaleV", "TheSkyImageScale"})
            script.setting("Solve", key, c.scale);
        script.waitIdle();
        script.put("AxisSimulator.Telescope", "PolarAzimuthError", c.azimuth);
        script.put("AxisSimulator.Telescope", "PolarElevationError", c.elevation);
        script.click("frmMain.cmdRun").waitForNext().click("frmMain.cmdNext").advance(6);
        for (const char* adjuster : {"PolarAzimuthError", "PolarElevationError"}) {
            script.click("frmMain.cmdNext").advance(1).waitForNext().advance(4);
            script.put("AxisSimulator.Telescope", adjuster, 0).advance(4);
            script.click("frmMain.cmdNext").advance(6);
        }
        script.read("frmMain.txtInstructions", "success").click("frmMain.cmdStop").waitIdle();
        const auto result = script.run();
        const auto arcMinutes = [&](const std::string& name) {
            for (const std::string& line : result.log)
                if (line.starts_with(name)) return std::stod(line.substr(name.size()));
            ADD_FAILURE() << name << testing::PrintToString(result.log);
            return 0.0;
        };
        EXPECT_NEAR(arcMinutes("Azimuth error: "), c.azimuth, 0.4);
        EXPECT_NEAR(arcMinutes("Elevation error: "), c.elevation, 0.4);
        EXPECT_THAT(result.log, Contains("Azimuth Correction Plate Solved"));
        EXPECT_THAT(result.log, Contains("Elevation Correction Plate Solved"));
        EXPECT_EQ(std::count(result.log.begin(), result.log.end(), "Star is on Plate"), 2);
        EXPECT_THAT(result.log, Not(Contains(HasSubstr("modComponents")))) << "no reports";
        EXPECT_EQ(result.reply("success")["text"], joinLines({"Polar Alignment Correction", "was Successful!",
                                                              "", "", "Click Next to measure again"}));
    }
}

TEST(Imaging, ExposesWithTheGreatestBinningThatTheCameraTakes) {
    Script script = nightWith("BuiltIn");
    script.setting("Solve", "CamBin", "8").click("frmMain.cmdExpose").waitIdle();
    script.send({{"id", "width"}, {"do", "automation"}, {"object", "Vantrel.Document"}, {"get", "XSize"}});
    const auto result = script.run();
    EXPECT_EQ(result.reply("width")["value"], 96 / 4);
    EXPECT_THAT(result.log,
                Contains(testing::StartsWith("Camera binning 8 is more than the camera takes: ")));
}

TEST(ShownImage, IsSavedWithItsMarks) {
    const vantrel::test::TempFolder folder;
    const auto file = folder / "shown.fit";
    Script script = nightWith("MaxIm");
    script.setting("Solve", "CamBin", "1").check("frmMain.chkCrossHairEnable", 1);
    script.click("frmMain.cmdExpose").waitIdle().send({{"do", "image"}, {"save", file.string()}});
    script.send({{"id", "white"}, {"do", "automation"}, {"object", kDocument}, {"get", "StretchMax"}});
    const auto result = script.run();
    const auto image = fits::FitsImage::open(file);
    ASSERT_EQ(image.width(), 96U);
    std::vector<float> pixels(96 * 64);
    image.readRows(0, pixels);
    const auto white = static_cast<float>(std::round(result.reply("white")["value"].get<double>()));
    for (std::size_t x = 0; x < 96; ++x) EXPECT_EQ(pixels[32 * 96 + x], white) << x;
    for (std::size_t y = 0; y < 64; ++y) EXPECT_EQ(pixels[y * 96 + 48], white) << y;
    EXPECT_LT(pixels[0], white);
}

}  // namespace
}  // namespace vantrel::headless
