// The whole program through the operator protocol: what the window and the log say in every situation.

#include <algorithm>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/text.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using platform::joinLines;
using test::json;
using test::Script;
using testing::Contains;
using testing::HasSubstr;

TEST(Measurement, EveryPromptSaysItsText) {
    const struct {
        const char* why;
        std::function<void(Script&)> prepare;
        int alignment;
        std::string text;
        bool skip;  // the prompt accepts it
        const char* end;
    } cases[] = {
        {"slew too small", [](Script& s) { s.type("frmMain.txtDeltaRA", "0"); }, 2,
         joinLines({"***ERROR***ERROR***", "Telescope Slew must be ", "between 1 and 45 degrees!", "",
                    "Enter a new value, click Next"}),
         false, "Align Aborted"},
        {"plate 1", [](Script& s) { s.giveBack("PinPoint.Plate", "Solve", false); }, 0,
         joinLines({"Plate Solve Failed !!", "1. Is Scope is Synced to Star?",
                    "2. Check Plate Solve Settings", "", "Click Next to try again"}),
         false, "Align Aborted"},
        {"plate 2", [](Script& s) { s.giveBack("PinPoint.Plate", "Solve", false, 1); }, 0,
         joinLines({"Second Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                    "Click Next to try again"}),
         false, "Align Aborted"},
        {"plate 3", [](Script& s) { s.giveBack("PinPoint.Plate", "Solve", false, 2); }, 0,
         joinLines({"Third Plate Solve Failed !!", "", "1. Try smaller Telescope Slew", "",
                    "Click Next to try again"}),
         false, "Align Aborted"},
        {"solved", [](Script&) {}, 0,
         joinLines({"Polar Align Measurement", "Completed Successfully !!", "1. Click Next to correct",
                    "      misalignment, or click", "      Skip Button to end"}),
         true, "Alignment Run Complete"},
    };
    for (const auto& c : cases) {
        Script script;
        c.prepare(script);
        script.waitIdle().click("frmMain.cmdRun").waitForNext();
        script.send({{"do", "read"}, {"control", "frmMain.txtInstructions"}});
        script.click("frmMain.cmdSkip");
        if (!c.skip) script.click("frmMain.cmdNext");
        script.waitIdle();
        const auto result = script.run();
        const auto prompt = std::find_if(result.replies.begin(), result.replies.end(),
                                         [](const json& reply) { return reply.contains("text"); });
        ASSERT_NE(prompt, result.replies.end()) << c.why;
        EXPECT_EQ((*prompt)["text"], c.text) << c.why;
        EXPECT_EQ((*prompt)["alignment"], c.alignment) << c.why;
        EXPECT_EQ((*(prompt + 1))["delivered"], c.skip) << c.why << ": Skip";
        EXPECT_EQ(result.log.back(), c.end) << c.why;
    }
}

TEST(Measurement, FailuresOfOutsideProgramsAreReportedLetterForLetter) {
    constexpr int kDriver = -2147352567;
    const char* mount = "AxisSimulator.Telescope";
    const struct {
        const char* why;
        std::function<void(Script&)> prepare;
        std::vector<std::string> logged;
        std::vector<std::string> shown;  // pop-ups
    } cases[] = {
        {"no link for the right ascension",
         [&](Script& s) { s.fail(mount, "RightAscension", 91, "", "none"); },
         {"Telescope link failed: Function GetTelescopeRA"},
         {}},
        {"the driver's own error",
         [&](Script& s) { s.fail(mount, "RightAscension", kDriver, "Sim", "Parked"); },
         {"ASCOM Telescope: Parked"},
         {}},
        {"another error",
         [&](Script& s) { s.fail(mount, "RightAscension", 7, "Sim", "Memory"); },
         {"Error 7: Memory\r\nmodComponents Function GetTelescopeRA"},
         {}},
        {"an error of the declination",
         [&](Script& s) { s.fail(mount, "Declination", 7, "Sim", "Memory"); },
         {"Sim Error 7: Memory\r\nmodComponents Function GetTelescopeDec"},
         {"Sim Error 7: Memory\r\nmodComponents Function GetTelescopeDec"}},
        {"the driver's error of the declination",
         [&](Script& s) { s.fail(mount, "Declination", kDriver, "Sim", "Parked"); },
         {"ASCOM Telescope: Parked"},
         {"ASCOM Telescope\r\nParked"}},
        {"a declination beyond the pole",
         [&](Script& s) { s.giveBack(mount, "Declination", 95); },
         {"Telescope Polar Axis Simulator returned illegal Dec value of: 95"},
         {}},
        {"a slew refused once",
         [&](Script& s) { s.fail(mount, "SlewToCoordinatesAsync", kDriver, "Sim", "Below horizon", 0, 1); },
         {"Telescope Slew failed on Trial 1", "Alignment Run Complete"},
         {}},
        {"a slew refused for ever",
         [&](Script& s) { s.fail(mount, "SlewToCoordinatesAsync", kDriver, "Sim", "Below horizon"); },
         {"Telescope Slew failed on Trial 5", "ASCOM Telescope: Below horizon"},
         {"ASCOM Telescope\r\nBelow horizon"}},
        {"sidereal time from the clock",
         [&](Script& s) { s.fail(mount, "SiderealTime", 438, "Sim", "No"); },
         {"Alignment Run Complete"},
         {}},
        {"no image",
         [&](Script& s) { s.fail(mount, "Expose", 7, "Sim", "Shutter"); },
         {"Error 7: Shutter\r\nmod cmdRun"},
         {"Error 7: Shutter\r\nmod cmdRun"}},
        {"an image that can't be attached",
         [](Script& s) { s.giveBack("PinPoint.Plate", "AttachFITS", false); },
         {"AttachFITS Failed", "Failed to Solve Plate!!", "Polar Align Aborted !!"},
         {}},
        {"an image that isn't there",
         [](Script& s) { s.setting("PolarAlign", "SaveImages", "1"); },
         {"Failed to Solve Plate!!", "Polar Align Aborted !!"},
         {}},
        {"no stars in the image",
         [](Script& s) { s.giveBack("PinPoint.Plate", "FindImageStars", false); },
         {"Start Solving Plate 1", "Polar Align Aborted !!"},
         {}},
        {"no stars in the catalogue",
         [](Script& s) { s.giveBack("PinPoint.Plate", "FindCatalogStars", false); },
         {"Step 2: Look up catalog stars for area...", "Polar Align Aborted !!"},
         {}},
        {"a refused parameter",
         [](Script& s) { s.fail("PinPoint.Plate", "SigmaAboveMean", 5, "PP", "No", 0, 1); },
         {"** PinPoint Error - Please Verify Settngs **", "CatalogExpansion = 0.3  pp = 0.3",
          "CatalogMaximumMagnitude = 20  pp = 20", "MinimumBrightness = 200  pp = 200",
          "MinimumStarSize = 2  pp = 2", "SigmaAboveMean = 4 pp = 4", "SetMaxSolveStars =0  pp = 0",
          "ArcsecPerPixelHoriz = 3.6  pp = 0", "ArcsecPerPixelVert = 3.6 pp = 0", "MinMatchStars = 0  pp = 0",
          "camBin = 3"},
         {}},
        {"a folder without a catalogue",
         [](Script& s) { s.setting("Solve", "ppCatPath3", "D:\\Stars"); },
         {"** PinPoint Error - Please Verify Settngs **", "Polar Align Aborted !!"},
         {}},
        {"every attempt of the search",
         [](Script& s) { s.giveBack("PinPoint.Plate", "Solve", false); },
         {" Initiating spiral search ", "  Plate solve attempt 1 of 10 failed",
          "  Plate solve attempt 10 of 10 failed", "Polar Align Aborted !!"},
         {}},
    };
    for (const auto& c : cases) {
        Script script;
        script.waitIdle();
        c.prepare(script);
        script.click("frmMain.cmdRun").advance(400);
        // Whatever the run asks now is answered; a disabled button ignores its click.
        script.click("frmMain.cmdSkip").advance(1).click("frmMain.cmdNext").waitIdle();
        const auto result = script.read("frmMain.cmdRun").run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line)) << c.why;
        for (const std::string& text : c.shown) EXPECT_THAT(result.popups, Contains(text)) << c.why;
        EXPECT_EQ(result.read.at("frmMain.cmdRun")["enabled"], true)
            << c.why << ": the window is usable again";
    }
}

TEST(Measurement, ASolvedRunTellsItsStory) {
    const auto result =
        Script().waitIdle().click("frmMain.cmdRun").waitForNext().click("frmMain.cmdSkip").waitIdle().run();
    std::vector<std::string> wanted = {"Start Alignment Run",
                                       "Plate solve method is PinPoint",
                                       "Selected catalog is GSC-ACT",
                                       "Telescope Slew is 15 degrees",
                                       "Exposure is 10 sec",
                                       "***** Exposing Image 1 *****",
                                       "Start Solving Plate 1",
                                       "Step 3: Solve the plate...",
                                       "Plate 1 Solved",
                                       "***** Exposing Image 2 *****",
                                       "Start Solving Plate 2",
                                       "Plate 2 Solved",
                                       "***** Exposing Image 3 *****",
                                       "Start Solving Plate 3",
                                       "Plate 3 Solved",
                                       "Alignment Run Complete"};
    auto next = wanted.begin();
    for (const std::string& line : result.log)
        if (next != wanted.end() && line == *next) ++next;
    EXPECT_EQ(next, wanted.end()) << "missing, or out of order: " << (next == wanted.end() ? "" : *next);
    for (const char* part :
         {"Telescope at RA = ", "Plate 3 Dec = ", "Theta = ", "Gamma = ", "Elevation error: ",
          "Azimuth error: ", " Degrees from Pole (Dec units)", " Degrees CCW from Up", ", Dec Offset = "})
        EXPECT_THAT(result.log, Contains(HasSubstr(part)));
}

}  // namespace
}  // namespace vantrel::headless
