// Solving plates through the operator protocol: what the log and the "Plate Solve" tab say in every
// situation.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/text.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using namespace test;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

constexpr const char* kMount = "AxisSimulator.Telescope";
constexpr const char* kPlate = "PinPoint.Plate";

/// A mount and a solver that tell the same numbers whatever the image shows.
void fixNumbers(Script& s) {
    const auto plate = [&](const char* member, const json& value) { s.giveBack(kPlate, member, value); };
    s.giveBack(kMount, "RightAscension", 5.5).giveBack(kMount, "Declination", -20.5);
    plate("RightAscension", 5.51), plate("Declination", -20.25), plate("RollAngle", 30);
    plate("ArcsecPerPixelHoriz", 2.5), plate("ArcsecPerPixelVert", 2.4);
    plate("MatchAvgResidual", 0.4), plate("MatchFitOrder", 4), plate("WCSValid", false);
    plate("CatalogPath", "C:\\Stars"), plate("FindCatalogStars", true);
    s.giveBack("PinPoint.Stars", "Count", 33);
}

Prepare clicking(const char* control) {
    return [=](Script& s) { s.click(control); };
}

const Lines kBegin = {"", "** Expose & Plate Solve **"};
const Lines kFound = {"Step 1: Found 33 objects in image."};
const Lines kAttempt = {"Plate Solve Attempt at RA = 05:30:36  Dec = -20° 15' 00\"",
                        "Step 2: Look up catalog stars for area...",
                        "Step 2: Found 33 catalog stars in area.", "Step 3: Solve the plate..."};
Lines solution(const std::string& binning = "3") {
    return texts(" Solved using 33 stars, average residual is 0.40 arcsec, order =4",
                 " Solution took 0.0 seconds", " RA = 05h 30m 36.000s  5.51000000",
                 " Dec = -20° 15' 00.00\"  -20.250000",
                 " Roll = 30.000 HScale = 2.500 VScale = 2.400 Binning = " + binning, " RA Error = 0.010000",
                 " Dec Error = 0.250000");
}
const Lines kUnsolved = {"Plate Solve failed", "Check Plate Solve Settings"};
const Lines kFailed = {"Failed to Solve Plate!!"};

Lines failedSearch() {
    Lines lines = kAttempt + Lines{" Initiating spiral search "};
    for (int i = 1; i <= 10; ++i)
        lines = lines + kAttempt + Lines{"  Plate solve attempt " + std::to_string(i) + " of 10 failed"};
    return lines;
}

TEST(PinPointSolve, SaysEveryStepAndEveryFailure) {
    const struct {
        const char* why;
        Prepare prepare;
        Lines logged;
    } situations[] = {
        {"solved at once", answering(kPlate, "Solve", true), kBegin + kFound + kAttempt + solution()},
        {"the stored binning is only told",
         both(storing("Solve", "CamBin", "2"), answering(kPlate, "Solve", true)),
         kBegin + kFound + kAttempt + solution("2")},
        {"solved at the second attempt",
         both(answering(kPlate, "Solve", false, 0, 1), answering(kPlate, "Solve", true)),
         kBegin + kFound + kAttempt + Lines{" Initiating spiral search "} + kAttempt + solution()},
        {"never solved", answering(kPlate, "Solve", false), kBegin + kFound + failedSearch() + kUnsolved},
        {"a solve that raises an error is one that failed, and no search is wanted",
         both(failing(kPlate, "Solve"), [](Script& s) { s.check("frmMain.chkSpiralSearch", 0); }),
         kBegin + kFound + kAttempt + kUnsolved},
        {"no file", answering(kMount, "SaveImageToFile", nullptr),
         kBegin + Lines{"Could not attach to C:\\Users\\observer\\My Documents\\Vantrel\\SavedImage"} +
             kFailed + kUnsolved},
        {"attached at the second try",
         both(answering(kPlate, "AttachFITS", false, 0, 1), answering(kPlate, "Solve", true)),
         kBegin + kFound + kAttempt + solution()},
        {"never attached", answering(kPlate, "AttachFITS", false),
         kBegin + Lines{"AttachFITS Failed"} + kFailed + kUnsolved},
        {"no image stars", answering(kPlate, "FindImageStars", false), kBegin + kUnsolved},
        {"no catalogue stars", answering(kPlate, "FindCatalogStars", false),
         kBegin + kFound + Lines(kAttempt.begin(), kAttempt.begin() + 2) + kUnsolved},
        {"a refused parameter", failing(kPlate, "MinimumStarSize", 5, 0, 1),
         kBegin +
             Lines{"** PinPoint Error - Please Verify Settngs **", "Catalog = 3  pp = 3",
                   "CatalogExpansion = 0.3  pp = 0.3", "CatalogMaximumMagnitude = 20  pp = 20",
                   "CatalogPath = C:\\  pp = C:\\Stars", "MinimumBrightness = 200  pp = 200",
                   "MinimumStarSize = 2  pp = 2", "SigmaAboveMean = 4 pp = 4", "SetMaxSolveStars =0  pp = 0",
                   "ArcsecPerPixelHoriz = 3.6  pp = 2.5", "ArcsecPerPixelVert = 3.6 pp = 2.4",
                   "MinMatchStars = 0  pp = 0", "camBin = 3"} +
             kUnsolved},
    };
    for (const auto& situation : situations) {
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
        script.click("frmMain.cmdRun").waitForLog(line);
        const auto result = script.click("frmMain.cmdStop").waitIdle().read("frmMain.cmdRun").run();
        EXPECT_THAT(result.log, Contains(kFailed.front())) << line;
        EXPECT_THAT(result.log, Not(Contains("Step 3: Solve the plate..."))) << line;
        EXPECT_EQ(result.read.at("frmMain.cmdRun")["enabled"], true) << line;
    }
}

TEST(PlateSolveMethod, IsChosenAndStored) {
    static constexpr const char* kError = "Error creating PinPoint.Plate";
    const struct {
        const char* why;
        const char* storedBefore;
        Prepare act;
        Lines logged, shown;
        json storedAfter;
        bool framePP, frameTheSky;
    } cases[] = {
        {"none was ever chosen", "", asItIs, texts(), texts(), "", false, false},
        {"and none is needed to expose", "", [](Script& s) { s.click("frmMain.cmdExposeSolve").waitIdle(); },
         kBegin + kUnsolved, texts(), "", false, false},
        {"PinPoint", "", clicking("frmMain.optPlateSolveMethod(0)"), texts("PinPoint is connected"), texts(),
         "0", true, false},
        {"the image link", "0", clicking("frmMain.optPlateSolveMethod(1)"), texts("Plate solve using TheSky"),
         texts(), "1", false, true},
        {"PinPoint that isn't installed", "1",
         [](Script& s) {
             s.installed({kMount, "CCDSoft.Camera"}).click("frmMain.optPlateSolveMethod(0)");
         },
         texts("PinPoint is not connected", kError), texts(), "1", false, true},
        {"PinPoint that fails once it was found", "1",
         both(failing(kPlate, "create", 429, 1), clicking("frmMain.optPlateSolveMethod(0)")), texts(kError),
         texts(kError), "1", false, true},
        {"what is stored means nothing", "x", asItIs, texts(), texts(), "x", false, false},
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

/// The edition that takes images as files only.
const Prepare kWithoutArrays = failing(kPlate, "ImageArray", 438);

TEST(PathTest, PassesOutOfTheBoxInBothEditions) {
    const struct {
        const char* why;
        Prepare prepare;
        Lines patterns;
    } cases[] = {
        {"full edition", asItIs,
         texts("", "\\*\\* PinPoint test \\*\\*", "Catalog: GSC-ACT", "Path: .+",
               "Position:  RA 00:00:00.0 Dec 00.+ 00' 00\\.0\"", "Field search = 1.0 x 1.0 \\(degrees\\)",
               "PinPoint test passed with [1-9][0-9]+ stars found")},
        {"on the test image", kWithoutArrays,
         texts(
             "", "", "\\*\\* PinPoint LE test \\*\\*", "Catalog: GSC-ACT", "Path: .+",
             "Test image solved using [1-9][0-9] stars, average residual is 0\\.[0-9]+ arcsec, order =[0-9]",
             " RA = 11h 05m (35.9|36.0)[0-9]+s", " Dec = -58.+ (44' 59.|45' 00.).+\"",
             " Roll = .+ HScale = 1.70[0-9] VScale = 1.70[0-9]", "  ")},
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

const Lines kFullTest =
    texts("", "** PinPoint test **", "Catalog: GSC-ACT", "Path: C:\\Stars",
          "Position:  RA 00:00:00.0 Dec 00° 00' 00.0\"", "Field search = 1.0 x 1.0 (degrees)");
const Lines kFullFailed = {"PinPoint test failed"};
const Lines kImageTest = {"", "** PinPoint LE test **"};
const Lines kImageCatalog = {"Catalog: GSC-ACT", "Path: C:\\Stars"};
const Lines kImageFailed = {"PinPoint LE test failed", "  "};

Prepare onImage(const Prepare& more) { return both(kWithoutArrays, more); }
Prepare findsStars(int count) { return answering("PinPoint.Stars", "Count", count); }

TEST(PathTest, SaysEveryFailure) {
    const Lines error = {"Src error: Broken (7)"};
    const struct {
        const char* why;
        Prepare prepare;
        Lines logged;
        bool passed = false;
    } cases[] = {
        {"with stars", findsStars(57), kFullTest + Lines{"PinPoint test passed with 57 stars found"}, true},
        {"without stars", findsStars(0), kFullTest + Lines{"PinPoint test passed with 0 stars found"}, true},
        {"a failing step doesn't keep the others from running", failing(kPlate, "Equinox"),
         error + kFullTest + kFullFailed},
        {"a failing look-up", failing(kPlate, "FindCatalogStars"), error + kFullTest + kFullFailed},
        {"a magnitude that is no number", typing("frmMain.txtCatMaxMag", "faint"),
         Lines{"Vantrel error: Type mismatch (13)"} + kFullTest + kFullFailed},
        {"a folder that is refused", failing(kPlate, "CatalogPath"), error},
        {"no PinPoint", failing(kPlate, "create", 429), texts("", "PinPoint is not installed")},
        {"a stop",
         [](Script& s) { s.click("frmMain.cmdRun").advance(0.5).click("frmMain.cmdStop").waitIdle(); },
         texts()},
        {"test image solved", onImage(both(answering(kPlate, "Solve", true), fixNumbers)),
         Lines{""} + kImageTest + kImageCatalog +
             Lines{"Test image solved using 33 stars, average residual is 0.40 arcsec, order =4",
                   " RA = 05h 30m 36.000s", " Dec = -20° 15' 00.00\"",
                   " Roll = 30.000 HScale = 2.500 VScale = 2.400", "  "},
         true},
        {"no test image", onImage([](Script& s) {
             s.send({{"do", "setting"}, {"section", "PolarAlign"}, {"key", "ImagePath"}, {"value", "E:"}});
         }),
         texts("", "Could not open E:\\VTL_Test_Image.fit", "(mod TestCatPathPPLE)")},
        {"test image attached at the second try",
         onImage(both(failing(kPlate, "AttachFITS", 7, 0, 1), answering(kPlate, "FindImageStars", false))),
         Lines{""} + kImageTest + Lines{" "} + kImageCatalog + kImageFailed},
        {"test image never attached", onImage(answering(kPlate, "AttachFITS", false)),
         texts("", "AttachFITS Failed")},
        {"no solution", onImage(answering(kPlate, "Solve", false)),
         Lines{""} + kImageTest + Lines{" "} + kImageCatalog + kImageFailed},
        {"an error during the test", onImage(failing(kPlate, "FindCatalogStars")),
         Lines{""} + error + kImageTest + Lines{" Broken"} + kImageCatalog + kImageFailed},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script;
        script.waitIdle();
        c.prepare(script);
        script.giveBack(kPlate, "CatalogPath", "C:\\Stars");
        script.startLog().click("frmMain.cmdTestCatPath").waitIdle();
        const auto result = script.read("frmMain.lblCatTest").read("frmMain.cmdTestCatPath").run();
        EXPECT_THAT(result.log, ElementsAreArray(c.logged));
        EXPECT_EQ(result.read.at("frmMain.lblCatTest")["caption"],
                  c.passed ? "Test passed\r\n(see log)" : "Test failed\r\n(see log)");
        EXPECT_EQ(result.read.at("frmMain.cmdTestCatPath")["enabled"], true);
        EXPECT_THAT(result.popups, IsEmpty());
    }
}

TEST(Catalogs, KeepTheirFoldersAndNumbers) {
    const struct {
        const char* why;
        Prepare act;
        const char *name, *folder, *key;
    } cases[] = {
        {"nothing is stored", asItIs, "GSC-ACT", "C:\\", nullptr},
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
        {"a cancelled dialog", clicking("frmMain.cmdSetDir"), "GSC-ACT", "c:\\", "ppCatPath3"},
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

// ---- by the image link, with CCDSoft

using testing::ElementsAre;

constexpr const char* kScopeSim = "ScopeSim.Telescope";
constexpr const char* kImage = "CCDSoft.Image";

/// The driver without a camera of its own, and the imaging program with the image link. Binned 2 x 2.
void setUp(Script& s) {
    s.setting("Main", "MyTelescopeID", kScopeSim).setting("PolarAlign", "ImagingSoftware", "CCDSoft");
    s.setting("PolarAlign", "PlateSolveMethod", "1").setting("Solve", "CamBin", "2");
    s.setting("Solve", "TheSkyImageScale", "7.2").setting("Solve", "ScaleH", "7.2");
    s.setting("Solve", "ScaleV", "7.2");
}

/// A header that tells these values, one after the other, once the start position has been written, and no
/// more.
Prepare telling(const std::vector<json>& values) {
    return [=](Script& s) {
        for (const json& value : values) s.giveBack(kImage, "FITSKeyword", value, 2, 1);
        failing(kImage, "FITSKeyword", 7, 2)(s);
    };
}

TEST(ImageLink, SaysEveryStepAndEveryFailure) {
    const Lines attempt = {"Plate Solve Attempt at RA = 23:54:00  Dec = -00° 30' 00\""};
    const Lines solution = {" RA = 00h 06m 00.000s", " Dec = -00° 15' 00.00\"", " RA Error = 0.200000",
                            " Dec Error = 0.250000"};
    const Lines noLink = {"Error when performing image link"};
    const Lines noResult = {"Error while getting image link results"};
    const struct {
        const char* why;
        Prepare prepare;
        Lines logged;
        bool solved = false;
    } cases[] = {
        {"solved", telling({1.5, -0.25, 0.002, 0, 0, "2E-3"}), attempt + solution, true},
        {"no link", failing(kImage, "InsertWCS"), attempt + noLink},
        {"a scale that the program refuses", failing(kImage, "ScaleInArcsecondsPerPixel"), attempt + noLink},
        {"a scale that is no number", typing("frmMain.txtTheSkyImageScale", "fine"), attempt + noLink},
        {"no right ascension", telling({}), attempt + noResult},
        {"a right ascension that is no number", telling({"unknown"}), attempt + noResult},
        {"no declination", telling({1.5}), attempt + noResult},
        {"no matrix, after the rest was told", telling({1.5, -0.25, 0.002}), attempt + solution + noResult},
    };
    for (const auto& c : cases) {
        Script script;
        setUp(script);
        script.waitIdle();
        c.prepare(script);
        script.giveBack(kImage, "InsertWCS", nullptr);
        script.giveBack(kScopeSim, "RightAscension", 23.9).giveBack(kScopeSim, "Declination", -0.5);
        script.startLog().click("frmMain.cmdExposeSolve").waitIdle().read("frmMain.cmdExposeSolve");
        const auto result = script.journal(kImage, "uses").run();
        EXPECT_THAT(result.uses("uses"), AllOf(Contains(HasSubstr(R"(FITSKeyword "OBJCTRA" "23 54 00)")),
                                               Contains(HasSubstr(R"(FITSKeyword "OBJCTDEC" "-00 30 00)"))));
        const Lines begin = {"", "** Expose & Plate Solve **"};
        const Lines failed = {"Plate Solve failed", "Check Plate Solve Settings"};
        EXPECT_THAT(result.log, ElementsAreArray(begin + c.logged + (c.solved ? Lines{} : failed))) << c.why;
        EXPECT_THAT(result.popups, IsEmpty()) << c.why;
        EXPECT_EQ(result.read.at("frmMain.cmdExposeSolve")["enabled"], true) << c.why;
    }
}

TEST(ImageLink, ErrorsBeforeItAreTheCallersToReport) {
    const struct {
        const char* why;
        Prepare prepare;
        std::string report;
    } cases[] = {
        {"no image object, since the simulator took the image",
         storing("Main", "MyTelescopeID", "AxisSimulator.Telescope"),
         "Error 91: Object variable or With block variable not set"},
        {"a header that can't be written", failing(kImage, "FITSKeyword"), "Error 7: Broken"},
    };
    for (const auto& c : cases)
        for (const bool run : {false, true}) {
            Script script;
            setUp(script);
            c.prepare(script);
            script.waitIdle().startLog().click(run ? "frmMain.cmdRun" : "frmMain.cmdExposeSolve").waitIdle();
            const auto result = script.read("frmMain.cmdRun").run();
            const std::string report =
                c.report + platform::kCrLf + (run ? "mod cmdRun" : "mod cmdExposeSolve");
            EXPECT_THAT(result.log, Contains(report)) << c.why;
            EXPECT_THAT(result.popups, ElementsAre(report)) << c.why;
            EXPECT_EQ(result.read.at("frmMain.cmdRun")["enabled"], true) << c.why;
        }
}

}  // namespace
}  // namespace vantrel::headless
