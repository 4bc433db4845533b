// The whole program through the operator protocol: what the window and the log say in every situation.

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script.h"

namespace vantrel::headless {
namespace {

using namespace test;
using testing::Contains;
using testing::HasSubstr;

constexpr const char* kAxisSimulator = "AxisSimulator.Telescope";
constexpr const char* kPinPoint = "PinPoint.Plate";

TEST(Measurement, FailuresAreReportedLetterForLetter) {
    const char* const run = "frmMain.cmdRun";
    const char* const exposeAndSolve = "frmMain.cmdExposeSolve";
    const std::string mismatch = "Error 13: Type mismatch\r\n";
    const auto onScopeSim = [](const char* control) -> Prepare {  // which has no camera of its own
        return
            [=](Script& s) { s.setting("Main", "MyTelescopeID", "ScopeSim.Telescope").type(control, "abc"); };
    };
    const std::vector<std::string> unsolved{"Plate Solve failed", "Check Plate Solve Settings"};
    const struct {
        const char* why;
        const char* button;
        Prepare prepare;
        std::vector<std::string> logged, shown = {};  // lines, and pop-ups
    } cases[] = {
        {"no image",
         run,
         failing(kAxisSimulator, "Expose"),
         {"Error 7: Broken\r\nmod cmdRun"},
         {"Error 7: Broken\r\nmod cmdRun"}},
        {"the largest slew", run, typing("frmMain.txtDeltaRA", "45"), {"Telescope Slew is 45 degrees"}},
        {"a slew that is no number", run, typing("frmMain.txtDeltaRA", "five"), {mismatch + "mod cmdRun"}},
        {"no method to solve with",  // which MaxIm DL would choose
         run,
         [](Script& s) {
             s.setting("PolarAlign", "PlateSolveMethod", "")
                 .setting("PolarAlign", "ImagingSoftware", "CCDSoft");
         },
         {"No Plate solve method selected", "Align Aborted"}},
        {"no number to expose",
         "frmMain.cmdExpose",
         onScopeSim("frmMain.txtContinuousExposeInterval"),
         {mismatch + "mod cmdRun"},
         {mismatch + "mod cmdRun"}},
        {"no number to expose and solve",
         exposeAndSolve,
         onScopeSim("frmMain.txtExposeInterval"),
         {"", "** Expose & Plate Solve **", mismatch + "mod cmdExposeSolve"},
         {mismatch + "mod cmdExposeSolve"}},
        {"the plate isn't solved", exposeAndSolve, [](Script& s) { s.giveBack(kPinPoint, "Solve", false); },
         unsolved},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script;
        script.waitIdle();
        c.prepare(script);
        script.click(c.button).advance(400);
        // Whatever the run asks now is answered; a disabled button ignores its click.
        script.click("frmMain.cmdSkip").advance(1).click("frmMain.cmdNext").waitIdle();
        const auto result = script.read(run).read("frmMain.cmdExpose").run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        for (const std::string& text : c.shown) EXPECT_THAT(result.popups, Contains(text));
        EXPECT_EQ(result.read.at(run)["enabled"], true) << "the window is usable again";
        EXPECT_EQ(result.read.at("frmMain.cmdExpose")["caption"], "Expose");
    }
}

/// The mount's own word isn't asked: the plates tell how far it turned.
TEST(Measurement, ASlewThatEndsEarlyIsSeenOnThePlates) {
    const auto warnings = [](Script& script) {
        const auto result = script.waitForNext().click("frmMain.cmdSkip").waitIdle().run();
        EXPECT_EQ(result.log.back(), "Alignment Run Complete");
        return std::count_if(result.log.begin(), result.log.end(), [](const std::string& line) {
            return line.starts_with("The telescope was sent 11.4") &&
                   line.ends_with(": don't trust this measurement");
        });
    };
    Script stopped;
    stopped.waitIdle()
        .put(kAxisSimulator, "SlewRate", 1)
        .click("frmMain.cmdRun")
        .waitForLog("Plate 1 Solved");
    EXPECT_EQ(warnings(stopped.advance(14).call(kAxisSimulator, "AbortSlew", 0)), 2)
        << "one too short, one too long";
    Script undisturbed;
    EXPECT_EQ(warnings(undisturbed.waitIdle().click("frmMain.cmdRun")), 0);
}

/// Plates on both sides of hour angle six are where the written calculation is wrong by minutes of arc.
TEST(Measurement, KnowsWhenItIsWrongAndWhatIsRight) {
    for (const bool leastSquares : {false, true}) {
        SCOPED_TRACE(leastSquares);
        Script script;
        script.setting("PolarAlign", "LeastSquares", leastSquares ? "1" : "0").waitIdle();
        script.put(kAxisSimulator, "PolarAzimuthError", 40).put(kAxisSimulator, "PolarElevationError", -25);
        constexpr double kFarInTheWest = 18.42;  // right ascension, at hour angle 6.5
        script.send({{"do", "automation"},
                     {"object", kAxisSimulator},
                     {"call", "SlewToCoordinates"},
                     {"args", {kFarInTheWest, 40}}});
        script.type("frmMain.txtDeltaRA", "20").click("frmMain.cmdRun").waitForNext();
        const auto result = script.click("frmMain.cmdSkip").waitIdle().run();
        const auto number = [&](const std::string& label) {
            for (const std::string& line : result.log)
                if (const auto at = line.find(label); at != std::string::npos)
                    return std::stod(line.substr(at + label.size()));
            return std::nan("");
        };
        const char* const warning = "Plates lie on both sides of hour angle six";
        EXPECT_THAT(result.log, Contains(HasSubstr(std::string("Warning: ") + warning)));
        EXPECT_THAT(result.popups, Contains(HasSubstr(warning)));
        EXPECT_NEAR(number("Least squares: azimuth "), 40, 0.15);
        EXPECT_EQ(std::abs(number("Azimuth error: ") - 40) < 0.15, leastSquares);
        EXPECT_EQ(std::abs(number("Elevation error: ") + 25) < 0.1, leastSquares)
            << "minutes off, as written";
    }
}

/// What a measurement relies on is out of reach while it is under way, and back afterwards; its own buttons,
/// the exposures of a correction and what only shows aren't touched.
TEST(Measurement, WhatItReliesOnIsOutOfReachWhileItIsUnderWay) {
    const std::vector<std::string> held{"frmMain.txtDeltaRA",
                                        "frmMain.optSlewWest",
                                        "frmMain.cmdExposeSolve",
                                        "frmMain.txtImagePath",
                                        "frmMain.txtSiteLat",
                                        "frmMain.optImagingSoftware(0)",
                                        "frmMain.optPlateSolveMethod(1)",
                                        "frmMain.cmdTestCatPath",
                                        "frmTelescope.cmdPickTelescope",
                                        "frmTelescope.cmdDisconnectTelescope"};
    const std::vector<std::string> free{"frmMain.cmdStop", "frmMain.txtContinuousExposeInterval",
                                        "frmMain.cmdLog", "frmMain.chkCrossHairEnable",
                                        "frmMain.mnuSetOptions"};
    const auto look = [&](Script& script, const std::string& moment) {
        for (const auto& list : {held, free})
            for (const std::string& control : list) script.read(control, moment + control);
    };
    Script script;
    script.waitIdle();
    look(script, "before ");
    script.click("frmMain.cmdRun").waitForLog("***** Exposing Image 1 *****");
    look(script, "during ");
    script.click("frmMain.cmdExposeSolve").click("frmMain.optSlewWest").type("frmMain.txtDeltaRA", "3");
    script.click("frmTelescope.cmdDisconnectTelescope").waitForNext();
    look(script, "offered ");
    script.click("frmMain.cmdSkip").waitIdle();
    look(script, "after ");
    const auto result = script.run();
    const auto enabled = [&](const std::string& moment, const std::string& control) {
        return result.reply(moment + control)["enabled"] == true;
    };
    for (const std::string& control : held) {
        EXPECT_FALSE(enabled("during ", control)) << control;
        EXPECT_FALSE(enabled("offered ", control)) << control;
        EXPECT_EQ(enabled("after ", control), enabled("before ", control)) << control;
    }
    for (const std::string& control : free) EXPECT_TRUE(enabled("during ", control)) << control;
    EXPECT_THAT(result.log, testing::Not(Contains("** Expose & Plate Solve **")));
}

/// A prompt that asks for other settings has to let them be changed; what is tried meanwhile doesn't keep the
/// program from closing.
TEST(Measurement, AFailurePromptLetsTheOperatorMendAndClose) {
    Script script;
    script.giveBack(kPinPoint, "Solve", false).waitIdle().click("frmMain.cmdRun").waitForNext();
    for (const char* control : {"frmMain.txtDeltaRA", "frmMain.cmdExposeSolve", "frmMain.txtSolveScaleH"})
        script.read(control);
    script.startLog().click("frmMain.cmdExposeSolve").send({{"do", "close"}, {"window", "frmMain"}});
    const auto result = script.advance(10).send({{"id", "windows"}, {"do", "windows"}}).run();
    for (const char* control : {"frmMain.txtDeltaRA", "frmMain.cmdExposeSolve", "frmMain.txtSolveScaleH"})
        EXPECT_EQ(result.reply(control)["enabled"], true) << control;
    EXPECT_TRUE(result.reply("windows")["windows"].empty()) << "closed";
    EXPECT_THAT(result.log, testing::Not(Contains("Plate Solve failed")));
}

TEST(Measurement, AnExposureWithASolveComesBeforeWhatIsStartedMeanwhile) {
    Script script;
    script.setting("Main", "MyTelescopeID", "ScopeSim.Telescope").waitIdle();
    script.startLog().click("frmMain.cmdExposeSolve").advance(2);
    script.click("frmMain.cmdRun").click("frmMain.cmdExposeSolve").click("frmMain.cmdRun").waitForNext();
    const auto result = script.click("frmMain.cmdSkip").waitIdle().run();
    const auto at = [&](const std::string& line) {
        return std::find(result.log.begin(), result.log.end(), line) - result.log.begin();
    };
    EXPECT_EQ(std::count(result.log.begin(), result.log.end(), "** Expose & Plate Solve **"), 1);
    EXPECT_EQ(std::count(result.log.begin(), result.log.end(), "Run waits until Expose & Solve has ended"),
              1);
    EXPECT_LT(at("Step 3: Solve the plate..."), at("Start Alignment Run"));
    EXPECT_THAT(result.log, Contains("Alignment Run Complete"));
}

TEST(Measurement, AnEarlierStopDoesNotKeepAnExposureFromBeingSolved) {
    for (const char* mount : {kAxisSimulator, "ScopeSim.Telescope"}) {
        Script script;
        script.setting("Main", "MyTelescopeID", mount).waitIdle().click("frmMain.cmdRun").advance(3);
        script.click("frmMain.cmdStop").waitIdle();
        const auto result = script.startLog().click("frmMain.cmdExposeSolve").waitIdle().run();
        EXPECT_THAT(result.log, Contains(HasSubstr(" RA Error = "))) << mount;
    }
}

TEST(Measurement, ImagesOfTheirOwnNamesAreSavedAndSolved) {
    for (const char* mount : {kAxisSimulator, "ScopeSim.Telescope"}) {
        Script script;
        script.setting("PolarAlign", "SaveImages", "1").setting("Main", "MyTelescopeID", mount);
        const auto result =
            script.waitIdle().click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle().run();
        EXPECT_THAT(result.log, Contains("Alignment Run Complete")) << mount;
    }
}

/// In both editions: the second one takes images as files only.
TEST(PathTest, PassesWithTheBuiltInSolver) {
    for (const bool files : {false, true}) {
        Script script;
        if (files) failing(kPinPoint, "ImageArray")(script);
        script.waitIdle().startLog().click("frmMain.cmdTestCatPath").waitIdle();
        const auto result = script.read("frmMain.lblCatTest").run();
        EXPECT_EQ(result.read.at("frmMain.lblCatTest")["caption"], "Test passed\r\n(see log)");
        const char* const passed =
            files ? " RA = 11h 05m (35.9|36.0)[0-9]+s" : "PinPoint test passed with [1-9][0-9]+ stars found";
        EXPECT_THAT(result.log, Contains(testing::MatchesRegex(passed)));
    }
}

}  // namespace
}  // namespace vantrel::headless
