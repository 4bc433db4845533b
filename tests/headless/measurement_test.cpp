// The whole program through the operator protocol: what the window and the log say in every situation.

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/color.h"
#include "platform/text.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using namespace test;
using testing::Contains;
using testing::HasSubstr;

constexpr const char* kAxisSimulator = "AxisSimulator.Telescope";
constexpr const char* kPinPoint = "PinPoint.Plate";

/// Three plates see only a large one, and say how far one that they can't see would lead astray; four see it.
TEST(Measurement, NamesAJumpOfTheTelescopeOrSaysThatItCouldHide) {
    const std::string moved = "Warning: The plates don't agree: the telescope moved in declination by ";
    const std::string couldHide =
        "A jump of 5 arc-sec in declination could hide here and move the axis by up to ";
    const auto says = [](const std::string& text) {
        return [&text](const std::string& line) { return line.find(text) != std::string::npos; };
    };
    const struct {
        double jump;  // arc-seconds
        const char* degrees;
        int slew;  // at which it comes
        const char* plates;
        bool named, couldHide;
    } cases[] = {{60, "30", 1, "3", true, true},
                 {-60, "30", 2, "3", true, true},
                 {5, "30", 1, "3", false, true},
                 {5, "20", 1, "4", true, false},
                 {-5, "20", 2, "4", true, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.jump << " at " << c.degrees << ", " << c.plates << " plates");
        Script script;
        script.waitIdle().type("frmMain.txtDeltaRA", c.degrees).type("frmMain.txtPlates", c.plates);
        script.put(kAxisSimulator, "DeclinationJumpSlew", c.slew)
            .put(kAxisSimulator, "DeclinationJump", c.jump);
        const auto result =
            script.click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle().run();
        EXPECT_EQ(std::ranges::any_of(result.log, says(moved)), c.named);
        EXPECT_EQ(std::ranges::any_of(result.log, says(couldHide)), c.couldHide);
    }
}

TEST(Measurement, FailuresOfOutsideProgramsAreReportedLetterForLetter) {
    constexpr int kDriver = -2147352567;
    const std::string declination = "Src Error 7: Broken\r\nmodComponents Function GetTelescopeDec";
    const struct {
        const char* why;
        Prepare prepare;
        Lines logged;
        Lines shown = {};  // pop-ups
    } cases[] = {
        {"no link for the right ascension", failing(kAxisSimulator, "RightAscension", 91),
         texts("Telescope link failed: Function GetTelescopeRA")},
        {"the driver's own error", failing(kAxisSimulator, "RightAscension", kDriver),
         texts("ASCOM Telescope: Broken")},
        {"another error", failing(kAxisSimulator, "RightAscension"),
         texts("Error 7: Broken\r\nmodComponents Function GetTelescopeRA")},
        {"an error of the declination", failing(kAxisSimulator, "Declination"), texts(declination),
         texts(declination)},
        {"the driver's error of the declination", failing(kAxisSimulator, "Declination", kDriver),
         texts("ASCOM Telescope: Broken"), texts("ASCOM Telescope\r\nBroken")},
        {"a declination beyond the pole", answering(kAxisSimulator, "Declination", 95),
         texts("Telescope Polar Axis Simulator returned illegal Dec value of: 95")},
        {"a slew refused once", failing(kAxisSimulator, "SlewToCoordinatesAsync", kDriver, 0, 1),
         texts("Telescope Slew failed on Trial 1", "Alignment Run Complete")},
        {"a slew refused for ever", failing(kAxisSimulator, "SlewToCoordinatesAsync", kDriver),
         texts("Telescope Slew failed on Trial 5", "ASCOM Telescope: Broken"),
         texts("ASCOM Telescope\r\nBroken")},
        {"sidereal time from the clock", failing(kAxisSimulator, "SiderealTime", 438),
         texts("Alignment Run Complete")},
        {"no image", failing(kAxisSimulator, "Expose"), texts("Error 7: Broken\r\nmod cmdRun"),
         texts("Error 7: Broken\r\nmod cmdRun")},
        {"an image that isn't there", answering(kAxisSimulator, "SaveImageToFile", true),
         texts("Failed to Solve Plate!!", "Polar Align Aborted !!")},
        {"a folder without a catalogue", storing("Solve", "ppCatPath3", "D:\\Stars"),
         texts("** PinPoint Error - Please Verify Settngs **", "Polar Align Aborted !!")},
        {"the largest slew", typing("frmMain.txtDeltaRA", "45"), texts("Telescope Slew is 45 degrees")},
        {"a slew that is no number", typing("frmMain.txtDeltaRA", "five"),
         texts("Error 13: Type mismatch\r\nmod cmdRun")},
        {"a utility object that fails", failing("DriverHelper.Util", "HoursToHMS", 440, 0, 1),
         texts("Error 440: Broken\r\nmod cmdRun")},
        {"no method to solve with",  // which MaxIm DL would choose
         both(storing("PolarAlign", "PlateSolveMethod", ""),
              storing("PolarAlign", "ImagingSoftware", "CCDSoft")),
         texts("No Plate solve method selected", "Align Aborted")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script;
        script.waitIdle();
        c.prepare(script);
        script.click("frmMain.cmdRun").advance(400);
        // Whatever the run asks now is answered; a disabled button ignores its click.
        script.click("frmMain.cmdSkip").advance(1).click("frmMain.cmdNext").waitIdle();
        const auto result = script.read("frmMain.cmdRun").run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        for (const std::string& text : c.shown) EXPECT_THAT(result.popups, Contains(text));
        EXPECT_EQ(result.read.at("frmMain.cmdRun")["enabled"], true) << "the window is usable again";
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

/// Slews the simulator to this hour angle and declination.
void pointTo(Script& script, double hourAngle, double declination) {
    script.send({{"id", "lst"}, {"do", "automation"}, {"object", kAxisSimulator}, {"get", "SiderealTime"}});
    const double lst = Script(script).run().reply("lst")["value"];
    script.send({{"do", "automation"},
                 {"object", kAxisSimulator},
                 {"call", "SlewToCoordinates"},
                 {"args", {std::fmod(lst - hourAngle + 24, 24), declination}}});
}

/// Plates on both sides of hour angle six are where the written calculation is wrong by minutes of arc.
TEST(Measurement, KnowsWhenItIsWrongAndWhatIsRight) {
    for (const bool leastSquares : {false, true}) {
        SCOPED_TRACE(leastSquares);
        Script script;
        script.waitIdle()
            .put(kAxisSimulator, "PolarAzimuthError", 40)
            .put(kAxisSimulator, "PolarElevationError", -25);
        script.type("frmMain.txtDeltaRA", "20");
        if (leastSquares) storing("PolarAlign", "LeastSquares", "1")(script);
        pointTo(script, 6.5, 40);
        const auto result =
            script.click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle().run();
        const auto number = [&](const std::string& label) {
            for (const std::string& line : result.log)
                if (const auto at = line.find(label); at != std::string::npos)
                    return std::stod(line.substr(at + label.size()));
            return std::nan("");
        };
        EXPECT_NEAR(number("Least squares: azimuth "), 40, 0.15);
        EXPECT_THAT(result.log, Contains(HasSubstr("Warning: Plates lie on both sides of hour angle six")));
        EXPECT_THAT(result.popups, Contains(HasSubstr("Plates lie on both sides of hour angle six")));
        if (leastSquares) {
            EXPECT_NEAR(number("Azimuth error: "), 40, 0.15);
            EXPECT_NEAR(number("Elevation error: "), -25, 0.1);
        } else {
            EXPECT_GT(std::abs(number("Elevation error: ") + 25), 2) << "as written";
        }
    }
}

/// The estimate, its ellipse and both poles, seen through the air, behind what scripts have always read; and
/// the first of two measurements as a faded dot.
TEST(Measurement, DrawsHowGoodItIs) {
    for (const double latitude : {50.0, -50.0}) {
        SCOPED_TRACE(latitude);
        Script script;
        script.waitIdle()
            .put(kAxisSimulator, "SiteLatitude", latitude)
            .put(kAxisSimulator, "Refraction", true);
        script.put(kAxisSimulator, "PolarAzimuthError", 0.5).put(kAxisSimulator, "PolarElevationError", 0.6);
        pointTo(script, -0.5, latitude < 0 ? -30 : 30);
        script.type("frmMain.txtDeltaRA", "9").click("frmMain.cmdPolarPlot");
        for (int run = 0; run < 2; ++run)
            script.click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle();
        const auto draw = [&](const char* name) {
            script.send({{"id", name}, {"do", "drawing"}, {"control", "frmPolarPlot.picPolarPlot"}});
        };
        draw("plain");
        script.check("frmPolarPlot.chkHistory", 1);
        draw("with history");
        script.read("frmPolarPlot.txtEstimateElevation").read("frmPolarPlot.txtElevationSigma");
        const auto result = script.click("frmPolarPlot.cmdHistory").read("frmHistory.cmbMeasurement").run();

        const auto shapes = [&](const char* name, const char* kind) {
            std::vector<json> found;
            const json reply = result.reply(name);
            for (const json& shape : reply["drawing"])
                if (shape["kind"] == kind) found.push_back(shape);
            return found;
        };
        const auto value = [&](const char* box) {
            return platform::toNumber(result.reply(box)["text"].get<std::string>());
        };
        ASSERT_EQ(shapes("plain", "cross").size(), 1u);
        ASSERT_EQ(shapes("plain", "ellipse").size(), 1u);
        const json cross = shapes("plain", "cross")[0], ellipse = shapes("plain", "ellipse")[0];
        const double hemisphere = latitude < 0 ? -1 : 1;
        EXPECT_NEAR(cross["y"].get<double>(), hemisphere * 0.8 * value("frmPolarPlot.txtEstimateElevation"),
                    0.005);
        EXPECT_EQ(ellipse["y"], cross["y"]);
        EXPECT_EQ(ellipse["x"], cross["x"]);
        EXPECT_GT(ellipse["major"], ellipse["minor"]);
        EXPECT_GT(value("frmPolarPlot.txtElevationSigma"), 1);

        const auto lines = shapes("plain", "line");
        ASSERT_EQ(lines.size(), 3u) << "the axes, and the refracted pole";
        const double lift = 58.0 / 60 / std::tan(std::abs(latitude) * std::acos(-1) / 180);
        EXPECT_NEAR(lines[2]["y1"].get<double>(), hemisphere * 0.8 * lift, 0.02);

        const auto dots = [&](const char* name) {
            const auto circles = shapes(name, "circle");
            return std::ranges::count_if(circles, [](const json& one) { return one.contains("strength"); });
        };
        EXPECT_EQ(dots("plain"), 0);
        EXPECT_EQ(dots("with history"), 1);
        EXPECT_EQ(result.reply("frmHistory.cmbMeasurement")["items"].size(), 2u);
    }
}

TEST(Measurement, ASolvedRunTellsItsStory) {
    const auto result =
        Script().waitIdle().click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle().run();
    const Lines wanted = texts("Start Alignment Run", "Plate solve method is PinPoint",
                               "Selected catalog is GSC-ACT", "Telescope Slew is 15 degrees",
                               "Exposure is 10 sec", "***** Exposing Image 1 *****", "Start Solving Plate 1",
                               "Step 3: Solve the plate...", "Plate 1 Solved", "***** Exposing Image 2 *****",
                               "Start Solving Plate 2", "Plate 2 Solved", "***** Exposing Image 3 *****",
                               "Start Solving Plate 3", "Plate 3 Solved", "Alignment Run Complete");
    auto next = wanted.begin();
    for (const std::string& line : result.log)
        if (next != wanted.end() && line == *next) ++next;
    EXPECT_EQ(next, wanted.end()) << "missing, or out of order: " << (next == wanted.end() ? "" : *next);
    for (const char* part :
         {"Telescope at RA = ", "Plate 3 Dec = ", "Theta = ", "Gamma = ", "Elevation error: ",
          "Azimuth error: ", " Degrees from Pole (Dec units)", " Degrees CCW from Up", ", Dec Offset = "})
        EXPECT_THAT(result.log, Contains(HasSubstr(part)));
}

/// What a measurement relies on is out of reach while it is under way, and back afterwards; its own buttons,
/// the exposures of a correction and what only shows aren't touched.
TEST(Measurement, WhatItReliesOnIsOutOfReachWhileItIsUnderWay) {
    const Lines held = texts("frmMain.txtDeltaRA", "frmMain.optSlewWest", "frmMain.cmdExposeSolve",
                             "frmMain.txtImagePath", "frmMain.txtSiteLat", "frmMain.optImagingSoftware(0)",
                             "frmMain.optPlateSolveMethod(1)", "frmMain.cmdTestCatPath",
                             "frmTelescope.cmdPickTelescope", "frmTelescope.cmdDisconnectTelescope");
    const Lines free = texts("frmMain.cmdStop", "frmMain.txtContinuousExposeInterval", "frmMain.cmdLog",
                             "frmMain.chkCrossHairEnable", "frmMain.mnuSetOptions");
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

}  // namespace
}  // namespace vantrel::headless
