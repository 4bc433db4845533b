// Solving plates through the operator protocol: what the log and the "Plate Solve" tab say in every
// situation.

#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script.h"

namespace vantrel::headless {
namespace {

using test::json;
using test::Lines;
using test::Script;
using testing::Contains;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

constexpr const char* kMount = "AxisSimulator.Telescope";
constexpr const char* kPlate = "PinPoint.Plate";
constexpr int kDriver = -2147352567;

/// One situation: what the scene is, what the operator does, and all that is logged from then on.
struct Situation {
    const char* why;
    std::function<void(Script&)> prepare;
    Lines logged;
};

/// A mount and a solver that tell the same numbers whatever the image shows.
void fixNumbers(Script& s) {
    s.giveBack(kMount, "RightAscension", 5.5).giveBack(kMount, "Declination", -20.5);
    for (const auto& [member, value] : std::map<const char*, json>{{"RightAscension", 5.51},
                                                                   {"Declination", -20.25},
                                                                   {"RollAngle", 30},
                                                                   {"ArcsecPerPixelHoriz", 2.5},
                                                                   {"ArcsecPerPixelVert", 2.4},
                                                                   {"MatchAvgResidual", 0.4},
                                                                   {"MatchFitOrder", 4},
                                                                   {"WCSValid", false},
                                                                   {"CatalogPath", "C:\\Stars"},
                                                                   {"FindCatalogStars", true}})
        s.giveBack(kPlate, member, value);
    s.giveBack("PinPoint.Stars", "Count", 33);
}

const Lines kBegin = {"", "** Expose & Plate Solve **"};
const Lines kFound = {"Step 1: Found 33 objects in image."};
const Lines kAttempt = {"Plate Solve Attempt at RA = 05:30:36  Dec = -20° 15' 00\"",
                        "Step 2: Look up catalog stars for area...",
                        "Step 2: Found 33 catalog stars in area.", "Step 3: Solve the plate..."};
const Lines kSolution = {" Solved using 33 stars, average residual is 0.40 arcsec, order =4",
                         " Solution took 0.0 seconds",
                         " RA = 05h 30m 36.000s  5.51000000",
                         " Dec = -20° 15' 00.00\"  -20.250000",
                         " Roll = 30.000 HScale = 2.500 VScale = 2.400 Binning = 3",
                         " RA Error = 0.010000",
                         " Dec Error = 0.250000"};
const Lines kUnsolved = {"Plate Solve failed", "Check Plate Solve Settings"};
const Lines kFailed = {"Failed to Solve Plate!!"};

Lines failedSearch() {
    Lines lines = kAttempt + Lines{" Initiating spiral search "};
    for (int i = 1; i <= 10; ++i)
        lines = lines + kAttempt + Lines{"  Plate solve attempt " + std::to_string(i) + " of 10 failed"};
    return lines;
}

TEST(PinPointSolve, SaysEveryStepAndEveryFailure) {
    const Situation situations[] = {
        {"solved at once", [](Script& s) { s.giveBack(kPlate, "Solve", true); },
         kBegin + kFound + kAttempt + kSolution},
        {"the stored binning is only told",
         [](Script& s) { s.setting("Solve", "CamBin", "2").giveBack(kPlate, "Solve", true); },
         kBegin + kFound + kAttempt + Lines(kSolution.begin(), kSolution.begin() + 4) +
             Lines{" Roll = 30.000 HScale = 2.500 VScale = 2.400 Binning = 2"} +
             Lines(kSolution.begin() + 5, kSolution.end())},
        {"solved at the second attempt",
         [](Script& s) { s.giveBack(kPlate, "Solve", false, 0, 1).giveBack(kPlate, "Solve", true); },
         kBegin + kFound + kAttempt + Lines{" Initiating spiral search "} + kAttempt + kSolution},
        {"never solved", [](Script& s) { s.giveBack(kPlate, "Solve", false); },
         kBegin + kFound + failedSearch() + kUnsolved},
        {"a solve that raises an error is one that failed, and no search is wanted",
         [](Script& s) {
             s.fail(kPlate, "Solve", 7, "PP", "No");
             s.send({{"do", "check"}, {"control", "frmMain.chkSpiralSearch"}, {"value", 0}});
         },
         kBegin + kFound + kAttempt + kUnsolved},
        {"no file", [](Script& s) { s.giveBack(kMount, "SaveImageToFile", nullptr); },
         kBegin + Lines{"Could not attach to C:\\Users\\observer\\My Documents\\Vantrel\\SavedImage"} +
             kFailed + kUnsolved},
        {"attached at the second try",
         [](Script& s) { s.giveBack(kPlate, "AttachFITS", false, 0, 1).giveBack(kPlate, "Solve", true); },
         kBegin + kFound + kAttempt + kSolution},
        {"never attached", [](Script& s) { s.giveBack(kPlate, "AttachFITS", false); },
         kBegin + Lines{"AttachFITS Failed"} + kFailed + kUnsolved},
        {"no image stars", [](Script& s) { s.giveBack(kPlate, "FindImageStars", false); },
         kBegin + kUnsolved},
        {"no catalogue stars", [](Script& s) { s.giveBack(kPlate, "FindCatalogStars", false); },
         kBegin + kFound + Lines(kAttempt.begin(), kAttempt.begin() + 2) + kUnsolved},
        {"a refused parameter", [](Script& s) { s.fail(kPlate, "MinimumStarSize", 5, "PP", "No", 0, 1); },
         kBegin +
             Lines{"** PinPoint Error - Please Verify Settngs **", "Catalog = 3  pp = 3",
                   "CatalogExpansion = 0.3  pp = 0.3", "CatalogMaximumMagnitude = 20  pp = 20",
                   "CatalogPath = C:\\  pp = C:\\Stars", "MinimumBrightness = 200  pp = 200",
                   "MinimumStarSize = 2  pp = 2", "SigmaAboveMean = 4 pp = 4", "SetMaxSolveStars =0  pp = 0",
                   "ArcsecPerPixelHoriz = 3.6  pp = 2.5", "ArcsecPerPixelVert = 3.6 pp = 2.4",
                   "MinMatchStars = 0  pp = 0", "camBin = 3"} +
             kUnsolved},
    };
    for (const Situation& situation : situations) {
        Script script;
        script.waitIdle();
        situation.prepare(script);
        fixNumbers(script);
        script.startLog().click("frmMain.cmdExposeSolve").waitIdle();
        const auto result = script.read("frmMain.cmdExposeSolve").run();
        EXPECT_THAT(result.log, ElementsAreArray(situation.logged)) << situation.why;
        EXPECT_THAT(result.popups, IsEmpty()) << situation.why;
        EXPECT_EQ(result.read.at("frmMain.cmdExposeSolve")["enabled"], true) << situation.why;
    }
}

TEST(PinPointSolve, AStopEndsItAtItsNextCheck) {
    for (const char* line :
         {"Step 2: Look up catalog stars for area...", "Step 1: Found 33 objects in image."}) {
        Script script;
        script.waitIdle();
        fixNumbers(script);
        script.click("frmMain.cmdRun").send({{"do", "wait"}, {"for", {{"log", line}}}, {"seconds", 100}});
        const auto result = script.click("frmMain.cmdStop").waitIdle().read("frmMain.cmdRun").run();
        EXPECT_THAT(result.log, Contains(kFailed.front())) << line;
        EXPECT_THAT(result.log, Not(Contains("Step 3: Solve the plate..."))) << line;
        EXPECT_EQ(result.read.at("frmMain.cmdRun")["enabled"], true) << line;
    }
}

TEST(PlateSolveMethod, IsChosenAndStored) {
    const Lines noPinPoint = {kMount, "CCDSoft.Camera"};
    const struct {
        const char* why;
        const char* storedBefore;
        std::function<void(Script&)> act;
        Lines logged, shown;
        json storedAfter;
        bool framePP, frameTheSky;
    } cases[] = {
        {"none was ever chosen", "", [](Script&) {}, {}, {}, "", false, false},
        {"and none is needed to expose",
         "",
         [](Script& s) { s.click("frmMain.cmdExposeSolve").waitIdle(); },
         kBegin + kUnsolved,
         {},
         "",
         false,
         false},
        {"PinPoint",
         "",
         [](Script& s) { s.click("frmMain.optPlateSolveMethod(0)"); },
         {"PinPoint is connected"},
         {},
         "0",
         true,
         false},
        {"the image link",
         "0",
         [](Script& s) { s.click("frmMain.optPlateSolveMethod(1)"); },
         {"Plate solve using TheSky"},
         {},
         "1",
         false,
         true},
        {"PinPoint that isn't installed",
         "1",
         [&](Script& s) { s.installed(noPinPoint).click("frmMain.optPlateSolveMethod(0)"); },
         {"PinPoint is not connected", "Error creating PinPoint.Plate"},
         {},
         "1",
         false,
         true},
        {"PinPoint that fails once it was found",
         "1",
         [](Script& s) {
             s.fail(kPlate, "create", 429, "PP", "No", 1);
             s.click("frmMain.optPlateSolveMethod(0)");
         },
         {"Error creating PinPoint.Plate"},
         {"Error creating PinPoint.Plate"},
         "1",
         false,
         true},
    };
    for (const auto& c : cases) {
        Script script;
        script.setting("PolarAlign", "ImagingSoftware", "CCDSoft");  // the other one goes with PinPoint only
        script.setting("PolarAlign", "PlateSolveMethod", c.storedBefore).waitIdle().startLog();
        c.act(script);
        script.waitIdle();
        for (const char* control : {"frmMain.framePP", "frmMain.frameTheSky"}) script.read(control);
        const auto result = script.readSetting("PolarAlign", "PlateSolveMethod").run();
        EXPECT_THAT(result.log, ElementsAreArray(c.logged)) << c.why;
        EXPECT_THAT(result.popups, ElementsAreArray(c.shown)) << c.why;
        EXPECT_EQ(result.read.at("PlateSolveMethod")["value"], c.storedAfter) << c.why;
        EXPECT_EQ(result.read.at("frmMain.framePP")["visible"], c.framePP) << c.why;
        EXPECT_EQ(result.read.at("frmMain.frameTheSky")["visible"], c.frameTheSky) << c.why;
    }
}

TEST(PathTest, PassesOutOfTheBoxInBothEditions) {
    const struct {
        const char* why;
        std::function<void(Script&)> prepare;
        Lines patterns;
    } cases[] = {
        {"full edition",
         [](Script&) {},
         {"", "\\*\\* PinPoint test \\*\\*", "Catalog: GSC-ACT", "Path: .+",
          "Position:  RA 00:00:00.0 Dec 00.+ 00' 00\\.0\"", "Field search = 1.0 x 1.0 \\(degrees\\)",
          "PinPoint test passed with [1-9][0-9]+ stars found"}},
        {"without image arrays, on the test image",
         [](Script& s) { s.fail(kPlate, "ImageArray", 438, "PP", "No arrays"); },
         {"", "", "\\*\\* PinPoint LE test \\*\\*", "Catalog: GSC-ACT", "Path: .+",
          "Test image solved using [1-9][0-9] stars, average residual is 0\\.[0-9]+ arcsec, order =[0-9]",
          " RA = 11h 05m (35.9|36.0)[0-9]+s", " Dec = -58.+ (44' 59.|45' 00.).+\"",
          " Roll = .+ HScale = 1.70[0-9] VScale = 1.70[0-9]", "  "}},
    };
    for (const auto& c : cases) {
        Script script;
        c.prepare(script);
        script.waitIdle().startLog().click("frmMain.cmdTestCatPath").waitIdle();
        const auto result = script.read("frmMain.lblCatTest").run();
        EXPECT_EQ(result.read.at("frmMain.lblCatTest")["caption"], "Test passed\r\n(see log)") << c.why;
        ASSERT_EQ(result.log.size(), c.patterns.size()) << c.why;
        for (std::size_t i = 0; i < result.log.size(); ++i)
            EXPECT_THAT(result.log[i], MatchesRegex(c.patterns[i])) << c.why;
    }
}

const Lines kFullTest = {"",
                         "** PinPoint test **",
                         "Catalog: GSC-ACT",
                         "Path: C:\\Stars",
                         "Position:  RA 00:00:00.0 Dec 00° 00' 00.0\"",
                         "Field search = 1.0 x 1.0 (degrees)"};
const Lines kFullFailed = {"PinPoint test failed"};
const Lines kImageTest = {"", "** PinPoint LE test **"};
const Lines kImageCatalog = {"Catalog: GSC-ACT", "Path: C:\\Stars"};
const Lines kImageFailed = {"PinPoint LE test failed", "  "};

/// The edition that takes images as files only.
void withoutArrays(Script& s) { s.fail(kPlate, "ImageArray", 438, "PP", "No arrays"); }

TEST(PathTest, SaysEveryFailure) {
    const Lines error = {"PP error: Off (" + std::to_string(kDriver) + ")"};
    const struct {
        Situation situation;
        const char* caption;
    } cases[] = {
        {{"passed with stars", [](Script& s) { s.giveBack("PinPoint.Stars", "Count", 57); },
          kFullTest + Lines{"PinPoint test passed with 57 stars found"}},
         "Test passed"},
        {{"passed without stars", [](Script& s) { s.giveBack("PinPoint.Stars", "Count", 0); },
          kFullTest + Lines{"PinPoint test passed with 0 stars found"}},
         "Test passed"},
        {{"a failing step doesn't keep the others from running",
          [](Script& s) { s.fail(kPlate, "Equinox", kDriver, "PP", "Off"); },
          error + kFullTest + kFullFailed},
         "Test failed"},
        {{"a failing look-up", [](Script& s) { s.fail(kPlate, "FindCatalogStars", kDriver, "PP", "Off"); },
          error + kFullTest + kFullFailed},
         "Test failed"},
        {{"a magnitude that is no number", [](Script& s) { s.type("frmMain.txtCatMaxMag", "faint"); },
          Lines{"Vantrel error: Type mismatch (13)"} + kFullTest + kFullFailed},
         "Test failed"},
        {{"a folder that is refused", [](Script& s) { s.fail(kPlate, "CatalogPath", kDriver, "PP", "Off"); },
          error},
         "Test failed"},
        {{"no PinPoint",
          [](Script& s) { s.fail(kPlate, "create", 429, "PP", "No"); },
          {"", "PinPoint is not installed"}},
         "Test failed"},
        {{"a stop",
          [](Script& s) { s.click("frmMain.cmdRun").advance(0.5).click("frmMain.cmdStop").waitIdle(); },
          {}},
         "Test failed"},
        {{"test image solved",
          [](Script& s) {
              withoutArrays(s);
              s.giveBack(kPlate, "Solve", true);
              fixNumbers(s);
          },
          Lines{""} + kImageTest + kImageCatalog +
              Lines{"Test image solved using 33 stars, average residual is 0.40 arcsec, order =4",
                    " RA = 05h 30m 36.000s", " Dec = -20° 15' 00.00\"",
                    " Roll = 30.000 HScale = 2.500 VScale = 2.400", "  "}},
         "Test passed"},
        {{"no test image",
          [](Script& s) {
              withoutArrays(s);
              s.send({{"do", "setting"}, {"section", "PolarAlign"}, {"key", "ImagePath"}, {"value", "E:"}});
          },
          {"", "Could not open E:\\VTL_Test_Image.fit", "(mod TestCatPathPPLE)"}},
         "Test failed"},
        {{"test image attached at the second try",
          [](Script& s) {
              withoutArrays(s);
              s.fail(kPlate, "AttachFITS", kDriver, "PP", "Off", 0, 1);
              s.giveBack(kPlate, "FindImageStars", false);
          },
          Lines{""} + kImageTest + Lines{" "} + kImageCatalog + kImageFailed},
         "Test failed"},
        {{"test image never attached",
          [](Script& s) {
              withoutArrays(s);
              s.giveBack(kPlate, "AttachFITS", false);
          },
          {"", "AttachFITS Failed"}},
         "Test failed"},
        {{"no solution",
          [](Script& s) {
              withoutArrays(s);
              s.giveBack(kPlate, "Solve", false);
          },
          Lines{""} + kImageTest + Lines{" "} + kImageCatalog + kImageFailed},
         "Test failed"},
        {{"an error during the test",
          [](Script& s) {
              withoutArrays(s);
              s.fail(kPlate, "FindCatalogStars", kDriver, "PP", "Off");
          },
          Lines{""} + error + kImageTest + Lines{" Off"} + kImageCatalog + kImageFailed},
         "Test failed"},
    };
    for (const auto& [situation, caption] : cases) {
        Script script;
        script.waitIdle();
        situation.prepare(script);
        script.giveBack(kPlate, "CatalogPath", "C:\\Stars");
        script.startLog().click("frmMain.cmdTestCatPath").waitIdle();
        const auto result = script.read("frmMain.lblCatTest").read("frmMain.cmdTestCatPath").run();
        EXPECT_THAT(result.log, ElementsAreArray(situation.logged)) << situation.why;
        EXPECT_EQ(result.read.at("frmMain.lblCatTest")["caption"], caption + std::string("\r\n(see log)"))
            << situation.why;
        EXPECT_EQ(result.read.at("frmMain.cmdTestCatPath")["enabled"], true) << situation.why;
        EXPECT_THAT(result.popups, IsEmpty()) << situation.why;
    }
}

TEST(Catalogs, KeepTheirFoldersAndNumbers) {
    const struct {
        const char* why;
        std::function<void(Script&)> act;
        const char *name, *folder, *key;
    } cases[] = {
        {"nothing is stored", [](Script&) {}, "GSC-ACT", "C:\\", nullptr},
        {"an internet catalogue", [](Script& s) { s.choose("frmMain.cmbppCat", "USNO-B-Net"); }, "USNO-B-Net",
         "Internet", "ppCatPath8"},
        {"the other one", [](Script& s) { s.choose("frmMain.cmbppCat", "NOMAD-Net"); }, "NOMAD-Net",
         "Internet", "ppCatPath9"},
        {"a typed folder outlives another choice",
         [](Script& s) {
             s.choose("frmMain.cmbppCat", "USNO-B").type("frmMain.txtCatPath", "D:\\B");
             s.choose("frmMain.cmbppCat", "Tycho-2").choose("frmMain.cmbppCat", "USNO-B");
         },
         "USNO-B", "D:\\B", "ppCatPath7"},
        {"a picked folder",
         [](Script& s) {
             s.send({{"do", "answer"}, {"dialog", "folder"}, {"with", "F:\\GSC"}});
             s.click("frmMain.cmdSetDir");
         },
         "GSC-ACT", "F:\\GSC", "ppCatPath3"},
        {"a cancelled dialog", [](Script& s) { s.click("frmMain.cmdSetDir"); }, "GSC-ACT", "c:\\",
         "ppCatPath3"},
    };
    for (const auto& c : cases) {
        Script script;
        script.waitIdle();
        c.act(script);
        script.waitIdle().read("frmMain.cmbppCat").read("frmMain.txtCatPath").read("frmMain.lblCatTest");
        if (c.key != nullptr) script.readSetting("Solve", c.key);
        const auto result = script.run();
        EXPECT_EQ(result.read.at("frmMain.cmbppCat")["text"], c.name) << c.why;
        EXPECT_EQ(result.read.at("frmMain.txtCatPath")["text"], c.folder) << c.why;
        EXPECT_EQ(result.read.at("frmMain.lblCatTest")["caption"], "") << c.why;
        if (c.key != nullptr) {
            EXPECT_EQ(result.read.at(c.key)["value"], c.folder) << c.why;
        }
    }
}

}  // namespace
}  // namespace vantrel::headless
