// The imaging programs through the operator protocol: choice, launch, link, exposures, marks and files, and
// what the window and the log say when any member of them fails.

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
constexpr const char* kApplication = "MaxIm.Application";
constexpr const char* kDocument = "MaxIm.Document";
constexpr const char* kCCDSoft = "CCDSoft.Camera";
constexpr const char* kCCDSoftImage = "CCDSoft.Image";
constexpr const char* kSeconds = "frmMain.txtContinuousExposeInterval";

/// A member that fails once, or as often as said.
Prepare broken(const char* object, const char* member, int after = 0, int times = 1, int number = 7) {
    return failing(object, member, number, after, times);
}

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

/// A message and how long it is shown; 0: whichever time.
struct Popup {
    std::string text;
    double seconds = 0;
};

/// What has to be found in the log and among the messages.
struct Told {
    Lines logged;
    std::vector<Popup> shown = {};
    friend Told operator+(Told first, const Told& second) {
        first.shown.insert(first.shown.end(), second.shown.begin(), second.shown.end());
        return {first.logged + second.logged, first.shown};
    }
};

constexpr double kReport = 5;       // seconds
constexpr double kDisplayTime = 3;  // the field's

const Told kNothing = {};
template <typename... Texts>
Told logged(const Texts&... lines) {
    return {{lines...}};
}
Told shown(const std::string& text, double seconds) { return {{}, {{text, seconds}}}; }
/// In the log and in a message.
Told reported(const std::string& text, double seconds = kReport) { return {{text}, {{text, seconds}}}; }

void expectTold(const Script::Result& result, const Told& wanted) {
    for (const std::string& line : wanted.logged) EXPECT_THAT(result.log, Contains(line));
    for (const Popup& popup : wanted.shown) {
        const auto found = std::find(result.popups.begin(), result.popups.end(), popup.text);
        if (found == result.popups.end()) {
            ADD_FAILURE() << "not shown: " << popup.text << "\nbut " << testing::PrintToString(result.popups);
            continue;
        }
        const double seconds = result.popupSeconds[static_cast<std::size_t>(found - result.popups.begin())];
        if (popup.seconds != 0) {
            EXPECT_EQ(seconds, popup.seconds) << popup.text;
        }
    }
}

std::string sourced(const char* label) { return joinLines({"Src Error 7: Broken", label}); }
std::string unsourced(const char* label) { return joinLines({"Error 7: Broken", label}); }

// ---- exposures

enum class Series { kEnds, kGoesOn };

struct ExposureCase {
    const char* why;
    Prepare prepare;
    Told told;
    Series series = Series::kEnds;  // CameraFailed ends it
};

/// A series of exposures in which something goes wrong; afterwards the window can be used.
void checkExposures(const char* program, const std::vector<ExposureCase>& cases) {
    constexpr double kWatched = 8;  // seconds
    for (const ExposureCase& c : cases) {
        SCOPED_TRACE(c.why);
        Script script = nightWith(program);
        script.type("frmMain.txtContinuousExposeDelay", "1");
        script.check("frmMain.chkExposeContinuousEnable", 1).check("frmMain.chkCrossHairEnable", 1);
        c.prepare(script);
        script.click("frmMain.cmdExpose").advance(kWatched).read("frmMain.cmdExpose", "series");
        script.check("frmMain.chkExposeContinuousEnable", 0).waitIdle();
        script.read("frmMain.cmdExpose", "after").read("frmMain.cmdRun", "run");
        const auto result = script.run();
        expectTold(result, c.told);
        if (c.told.logged.empty()) {
            EXPECT_THAT(result.log, Not(Contains(HasSubstr("Broken"))));
        }
        EXPECT_EQ(result.reply("series")["caption"], c.series == Series::kEnds ? "Expose" : "Stop Expose");
        EXPECT_EQ(result.reply("after")["caption"], "Expose");
        EXPECT_EQ(result.reply("run")["enabled"], true);
    }
}

const Told kNoCamera =
    reported(joinLines({"Failed to start camera!", "Verify camera model in Imaging Software"}), kDisplayTime);
const Told kLet = reported(sourced("Module modComponents Property Let camLinkEnabled"));
const Told kGet = reported(sourced("Module modComponents Property Get camLinkEnabled"));
const Told kAcquire = reported(sourced("Module modComponents Sub AcquireImage"));
const Told kCrossHair = logged(unsourced("Module modComponents Sub CrossHair"));
const std::string kAborted = "Exposure Aborted";

TEST(MaxImExposures, ReportWhatFails) {
    const Told take = reported(unsourced("Module modComponents sub TakePicture"));
    const Told notStarted = reported(joinLines(
        {"Error 32768: MaxIm DL Failed to start the exposure", "Module modComponents sub TakePicture"}));
    std::vector<ExposureCase> cases = {
        {"the link can't be set, but is", broken(kMaxIm, "LinkEnabled"), kLet, Series::kGoesOn},
        {"the link can't be read", broken(kMaxIm, "LinkEnabled", 1), kGet + kNoCamera, Series::kGoesOn},
        {"no camera", answering(kMaxIm, "LinkEnabled", false), kNoCamera, Series::kGoesOn},
        {"the exposure doesn't start", answering(kMaxIm, "Expose", false), notStarted},
        {"the exposure fails to start", broken(kMaxIm, "Expose"), notStarted},
        {"the image fails", broken(kMaxIm, "ImageReady", 3), take},
        {"aborted in the program", broken(kMaxIm, "ImageReady", 3, 1, 65535), reported(kAborted)},
        {"the filter can't be read", broken(kMaxIm, "Filter", 0, -1), kNothing, Series::kGoesOn},
        {"the application is gone once", broken(kApplication, "AutofocusStatus"), kNothing, Series::kGoesOn},
        {"the document is gone for once", broken(kDocument, "XSize", 1), kNothing, Series::kGoesOn},
        {"no application", broken(kApplication, "create", 0, -1), kCrossHair, Series::kGoesOn},
        {"no document", broken(kApplication, "CurrentDocument"), kCrossHair, Series::kGoesOn},
        {"the marked image isn't taken", broken(kDocument, "ImageArray", 1), kCrossHair, Series::kGoesOn},
    };
    for (const char* member : {"BinX", "BinY", "SetFullFrame", "MaxBinX", "MaxBinY"})
        cases.push_back({member, broken(kMaxIm, member), kAcquire});
    for (const char* member : {"XSize", "YSize", "StretchMax", "ImageArray"})
        cases.push_back({member, broken(kDocument, member), kCrossHair, Series::kGoesOn});
    checkExposures("MaxIm", cases);
}

TEST(CCDSoftExposures, ReportWhatFails) {
    const Told take = reported(sourced("Module modComponents sub TakeCCDSoftImage"));
    const Told attach = reported(sourced("Module modComponents Sub AttachCCDSoftImageToActiveImager"));
    const Told aborted = reported(kAborted, kDisplayTime);
    std::vector<ExposureCase> cases = {
        {"connecting fails, but it is", broken(kCCDSoft, "Connect"), kLet, Series::kGoesOn},
        {"the state can't be read", broken(kCCDSoft, "State"), kGet + kNoCamera, Series::kGoesOn},
        {"not linked", answering(kCCDSoft, "State", 5), kNoCamera, Series::kGoesOn},
        {"it can't be asynchronous", broken(kCCDSoft, "Asynchronous"), kNothing, Series::kGoesOn},
        {"whether it is can't be read", broken(kCCDSoft, "Asynchronous", 1), kNothing, Series::kGoesOn},
        {"it isn't", answering(kCCDSoft, "Asynchronous", false), kNothing, Series::kGoesOn},
        {"aborted in the program", broken(kCCDSoft, "IsExposureComplete", 3, 1, 65535), aborted},
        {"aborted before it began", broken(kCCDSoft, "TakeImage", 0, 1, 65535), aborted},
        {"no image object", broken(kCCDSoftImage, "create"), attach, Series::kGoesOn},
        {"no image to attach to", broken(kCCDSoftImage, "AttachToActiveImager"), attach, Series::kGoesOn},
        {"no open image", broken(kCCDSoftImage, "create", 1), kCrossHair, Series::kGoesOn},
        {"the marked image isn't taken", broken(kCCDSoftImage, "DataArray", 1), kCrossHair, Series::kGoesOn},
        {"the sub-frame can't be switched", broken(kCCDSoft, "Subframe", 1), take},
    };
    for (const char* member : {"AutoSaveOn", "ScreenShutter", "ToNewWindow", "AutoSaveFileFormat", "Series",
                               "ImageReduction", "Subframe"})
        cases.push_back({member, broken(kCCDSoft, member), kNothing, Series::kGoesOn});
    for (const char* member : {"BinX", "BinY"}) cases.push_back({member, broken(kCCDSoft, member), kAcquire});
    for (const char* member : {"Frame", "ExposureTime", "TakeImage", "IsExposureComplete"})
        cases.push_back({member, broken(kCCDSoft, member), take});
    for (const char* member : {"AttachToActive", "SetActive", "Width", "Height", "DataArray", "ModifiedFlag"})
        cases.push_back({member, broken(kCCDSoftImage, member), kCrossHair, Series::kGoesOn});
    checkExposures("CCDSoft", cases);
}

/// "HH:mm:ss", with or without a fraction.
double secondOfDay(const std::string& text) {
    return std::stod(text.substr(0, 2)) * 3600 + std::stod(text.substr(3, 2)) * 60 +
           std::stod(text.substr(6));
}

/// Seconds from the local time of the reply "start" to the report.
double secondsTo(const Script::Result& result, const std::string& line) {
    constexpr double kDay = 86400;
    const double start = secondOfDay(result.reply("start")["local"].get<std::string>().substr(11));
    for (const json& entry : result.replies[result.replies.size() - 2]["lines"]) {
        const auto text = entry.get<std::string>();
        if (text.substr(11) == line) return std::fmod(secondOfDay(text.substr(0, 8)) - start + kDay, kDay);
    }
    ADD_FAILURE() << "not logged: " << line;
    return 0;
}

TEST(Exposures, TimeOutAfterAMinuteAndTheGraceTime) {
    const std::string maxIm =
        joinLines({"Error 32768: Exposure by MaxIm DL failed after being successfully started.",
                   "Module modComponents sub TakePicture"});
    const std::string ccdSoft = "** CCD Soft Image not available (after waiting 60 sec) **";
    const struct {
        const char* program;
        const char* object;
        const char* member;
        std::string report;
        const char* grace;  // the field
        double seconds;     // after the exposure's 5
        long looks;
    } cases[] = {
        {"MaxIm", kMaxIm, "ImageReady", maxIm, "0", 62, 651},
        {"MaxIm", kMaxIm, "ImageReady", maxIm, "3.5", 63.5, 651},
        {"MaxIm", kMaxIm, "ImageReady", maxIm, "-1", 62, 651},
        {"MaxIm", kMaxIm, "ImageReady", maxIm, "", 62, 651},
        {"CCDSoft", kCCDSoft, "IsExposureComplete", ccdSoft, "0", 62, 652},
        {"CCDSoft", kCCDSoft, "IsExposureComplete", ccdSoft, "3.5", 63.5, 652},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.program) + " " + c.grace);
        Script script = nightWith(c.program);
        script.type(kSeconds, "5").type("frmMain.txtPostExpDelay", c.grace);
        script.giveBack(c.object, c.member, false);
        script.send({{"id", "start"}, {"do", "time"}}).journal(c.object, "before");
        script.click("frmMain.cmdExpose").waitIdle().journal(c.object, "exposure");
        script.read("frmMain.cmdExpose", "after");
        const auto result = script.run();
        EXPECT_NEAR(secondsTo(result, c.report), 5 + c.seconds, 1.01);
        EXPECT_EQ(result.times("exposure", std::string("get ") + c.member), c.looks);
        EXPECT_EQ(result.times("exposure", "call abort"), c.program[0] == 'C' ? 1 : 0);
        EXPECT_EQ(result.reply("after")["caption"], "Expose");
    }
}

TEST(Exposures, AskTheProgramForWhatIsSet) {
    const struct {
        const char* why;
        const char* program;
        const char* object;
        Prepare prepare;
        Lines uses;  // in this order
    } cases[] = {
        {"a light frame", "MaxIm", kMaxIm, asItIs,
         texts("put LinkEnabled true", "get LinkEnabled", "get Filter", "put BinX 1", "put BinY 1",
               "call SetFullFrame", "get MaxBinX", "get MaxBinY", "put BinX 2", "put BinY 2",
               "call Expose 1.0 1 0")},
        {"a dark frame", "MaxIm", kMaxIm, typing(kSeconds, "-2"), texts("call Expose 2.0 0 0")},
        {"the program's filter", "MaxIm", kMaxIm, [](Script& s) { s.put(kMaxIm, "Filter", 3); },
         texts("call Expose 1.0 1 3")},
        {"the stored filter when it can't be read", "MaxIm", kMaxIm,
         both(broken(kMaxIm, "Filter"), storing("CurrentVersion", "D3130_EXP_FILTER", "2")),
         texts("call Expose 1.0 1 2")},
        {"set-up and exposure", "CCDSoft", kCCDSoft, asItIs,
         texts("call Connect", "get State", "put AutoSaveOn 0", "put ScreenShutter 0", "put ToNewWindow 0",
               "put Subframe 0", "put AutoSaveFileFormat 0", "put Series 1", "put ImageReduction 1",
               "put BinX 2", "put BinY 2", "put Frame 1", "put Subframe false", "put ExposureTime 1.0",
               "put Asynchronous true", "get Asynchronous", "call TakeImage", "get IsExposureComplete")},
        {"no time at all", "CCDSoft", kCCDSoft, typing(kSeconds, "0"), texts("put ExposureTime 0.11")},
        {"a sub-frame", "CCDSoft", kCCDSoft, [](Script& s) { s.check("frmMain.chkUseCCDSoftSubFrame", 1); },
         texts("put Subframe true", "put ExposureTime 1.0")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script = nightWith(c.program);
        c.prepare(script);
        script.journal(c.object, "before").click("frmMain.cmdExpose").waitIdle().journal(c.object, "uses");
        const auto result = script.run();
        const Lines uses = result.uses("uses");
        auto at = uses.begin();
        for (const std::string& use : c.uses) {
            at = std::find(at, uses.end(), use);
            if (at == uses.end()) {
                ADD_FAILURE() << "missing, or out of order: " << use << testing::PrintToString(uses);
                break;
            }
        }
        if (c.uses.size() > 5) {
            EXPECT_TRUE(std::equal(c.uses.begin(), c.uses.end(), uses.begin()));
        }
        EXPECT_THAT(result.popups, Not(Contains(HasSubstr("Error"))));
    }
}

TEST(Exposures, StopAndClosingEndThem) {
    const struct {
        const char* program;
        const char* object;
        Lines logged;
        long aborts;
    } cases[] = {{"MaxIm", kMaxIm, {"Align Aborted"}, 0},
                 {"CCDSoft", kCCDSoft, {"Exposure aborted", "Align Aborted"}, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.program);
        Script script = nightWith(c.program);
        script.click("frmMain.cmdRun").advance(3).journal(c.object, "before").click("frmMain.cmdStop");
        script.waitIdle().journal(c.object, "stopped").read("frmMain.cmdRun", "run");
        script.click("frmMain.cmdExpose").waitIdle().journal(c.object, "again");
        script.type(kSeconds, "300").click("frmMain.cmdExpose").advance(2);
        const auto result = script.run();  // and closes the window meanwhile
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        EXPECT_THAT(result.log, Not(Contains(HasSubstr("Error"))));
        EXPECT_EQ(result.times("stopped", "call abort"), c.aborts);
        EXPECT_EQ(result.reply("run")["enabled"], true);
        EXPECT_THAT(result.popups, Not(Contains(HasSubstr("Error")))) << "the next exposure works";
    }
}

// ---- saving, solving, manual exposures

TEST(ManualExposures, ReportWhatFails) {
    const Told unsolved = logged("Plate Solve failed", "Check Plate Solve Settings");
    const Told unsaved = logged(sourced("modUtilities Sub SaveImageToFile")) + unsolved;
    const std::string mismatch = "Error 13: Type mismatch\r\n";
    const char* const expose = "frmMain.cmdExpose";
    const char* const exposeAndSolve = "frmMain.cmdExposeSolve";
    const struct {
        const char* why;
        const char* program;
        const char* button;
        Prepare prepare;
        Told told;
    } cases[] = {
        {"no number to expose", "MaxIm", expose, typing(kSeconds, "abc"), reported(mismatch + "mod cmdRun")},
        {"no number to expose and solve", "MaxIm", exposeAndSolve, typing("frmMain.txtExposeInterval", "abc"),
         logged("", "** Expose & Plate Solve **") + reported(mismatch + "mod cmdExposeSolve")},
        {"the image can't be saved", "MaxIm", exposeAndSolve, broken(kMaxIm, "SaveImage"), unsaved},
        {"the path isn't taken", "CCDSoft", exposeAndSolve, broken(kCCDSoftImage, "path"), unsaved},
        {"CCDSoft can't save", "CCDSoft", exposeAndSolve, broken(kCCDSoftImage, "Save"), unsaved},
        {"the plate isn't solved", "MaxIm", exposeAndSolve, answering("PinPoint.Plate", "Solve", false),
         unsolved},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script = nightWith(c.program);
        c.prepare(script);
        script.click(c.button).waitIdle().read("frmMain.cmdExpose", "expose").read("frmMain.cmdRun", "run");
        const auto result = script.run();
        expectTold(result, c.told);
        if (c.told.shown.empty()) {
            EXPECT_THAT(result.popups, Not(Contains(HasSubstr("Broken")))) << "logged only";
        }
        EXPECT_EQ(result.reply("expose")["caption"], "Expose");
        EXPECT_EQ(result.reply("run")["enabled"], true);
    }
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

// ---- which program, and its launch

TEST(ImagingChoice, IsMadeAtTheStart) {
    const Told maxIm = logged("MaxIm DL/CCD V 4.56 is the Imaging Software");
    const Told ccdSoft = logged("CCDSoft V 5.00.205 is the Imaging Software");
    const std::string launching = " Launching MaxIm DL \r\n Please wait ";
    const Told launchingMaxIm = shown(launching, 10);
    const Told launchingCCDSoft = shown(" Launching CCDSoft \r\n Please wait ", 10);
    const std::string connecting = " Conecting to Camera \r\n Please wait ";
    const Told connects = shown(connecting, 10);
    const Told noMaxIm = reported("Could not start MaxIm", 10);
    const Lines everything = {};
    const Lines mount = {"ScopeSim.Telescope", "PinPoint.Plate"};
    const char* const none = nullptr;
    const struct {
        const char* why;
        Lines installed;
        const char* stored;
        Prepare prepare;
        const char* program;  // in use
        Told told;
        std::string notShown = "-";
    } cases[] = {
        {"the built-in one is open", everything, none, asItIs, "MaxIm", maxIm + connects, launching},
        {"only MaxIm is installed", mount + texts(kMaxIm), none, asItIs, "MaxIm",
         maxIm + launchingMaxIm + connects},
        {"only CCDSoft is installed", mount + texts(kCCDSoft), none, asItIs, "CCDSoft",
         ccdSoft + launchingCCDSoft + connects},
        {"CCDSoft is stored", everything, "CCDSoft", asItIs, "CCDSoft", ccdSoft + launchingCCDSoft},
        {"any version will do", everything, "CCDSoft", storing("PolarAlign", "ImagingSWVersionCheck", "0"),
         "CCDSoft", logged("CCDSoft V Unknown is the Imaging Software")},
        {"neither is installed", mount, none, asItIs, none,
         logged("Neither MaxIm DL/CCD nor CCDSoft can be found", "You must install your Imaging Software") +
             shown(joinLines({"Neither MaxIm DL/CCD", " nor CCDSoft can be found ", "You must install your",
                              "Imaging Software"}),
                   0),
         connecting},
        {"the stored one isn't installed", mount, "CCDSoft", asItIs, "CCDSoft",
         logged("Could not find CCDSoft on this computer") + shown("Could not find CCDSoft", 10), connecting},
        {"the application can't be had", everything, none, broken(kApplication, "create"), "MaxIm", noMaxIm,
         connecting},
        {"the application doesn't tell its version", everything, none, broken(kApplication, "Version"),
         "MaxIm", noMaxIm, connecting},
        {"no scripting", everything, none, broken(kMaxIm, "DisableAutoShutdown"), "MaxIm",
         maxIm +
             logged("Your MaxIm DL Version does not support Scripting",
                    "MaxIm DL Version must be 2.06 or greater", "MaxIm DL Camera could not be Connected") +
             shown("MaxIm Version must be\r\n2.0.6 or greater\r\n\r\n MaxIm Camera Not Connected ", 10)},
        {"no camera in MaxIm", everything, none, answering(kMaxIm, "LinkEnabled", false), "MaxIm",
         maxIm + shown("Failed to start camera!\r\nVerify camera model in MaxIm", kDisplayTime)},
        {"no camera in CCDSoft", everything, "CCDSoft", answering(kCCDSoft, "State", 5), "CCDSoft",
         ccdSoft + shown("Failed to start camera!\r\nVerify camera model in CCDSoft", kDisplayTime)},
        {"no camera object", everything, "CCDSoft", broken(kCCDSoft, "create"), "CCDSoft",
         ccdSoft + reported(unsourced("modUtility Sub LaunchCCDSoft"))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script;
        script.setting("Main", "MyTelescopeID", "ScopeSim.Telescope");
        if (!c.installed.empty()) script.installed(c.installed);
        if (c.stored != nullptr) script.setting("PolarAlign", "ImagingSoftware", c.stored);
        c.prepare(script);
        script.waitIdle();
        script.readSetting("PolarAlign", "ImagingSoftware");
        script.read("frmMain.optImagingSoftware(0)", "0").read("frmMain.optImagingSoftware(1)", "1");
        script.read("frmMain.cmdRun", "run");
        const auto result = script.run();
        expectTold(result, c.told);
        EXPECT_THAT(result.popups, Not(Contains(c.notShown)));
        const json program = c.program == nullptr ? json() : json(c.program);
        EXPECT_EQ(result.reply("ImagingSoftware")["value"], program);
        EXPECT_EQ(result.reply("0")["value"], program == "CCDSoft" ? 1 : 0);
        EXPECT_EQ(result.reply("1")["value"], program == "MaxIm" ? 1 : 0);
        EXPECT_EQ(result.reply("run")["enabled"], true);
    }
}

TEST(ImagingChoice, IsTheOperatorsWhenBothAreInstalled) {
    Script script;
    script.setting("Main", "MyTelescopeID", "ScopeSim.Telescope");
    script.installed({kMaxIm, kCCDSoft, "ScopeSim.Telescope", "PinPoint.Plate"});
    script.send({{"do", "wait"}, {"for", {{"window", "frmSelectCCSoftware"}}}, {"seconds", 10}});
    script.advance(30).read("frmSelectCCSoftware.cmdImagingSoftwareOK", "before");
    script.click("frmSelectCCSoftware.optCCDSoft").read("frmSelectCCSoftware.cmdImagingSoftwareOK", "chosen");
    script.click("frmSelectCCSoftware.cmdImagingSoftwareOK").waitIdle();
    script.read("frmMain.optImagingSoftware(0)", "option");
    const auto result = script.run();
    EXPECT_EQ(result.reply("before")["enabled"], false);
    EXPECT_EQ(result.reply("chosen")["enabled"], true);
    EXPECT_EQ(result.reply("option")["value"], 1);
    EXPECT_THAT(result.log, Contains(HasSubstr("CCDSoft V ")));
}

TEST(ImagingChoice, HandsTheCameraOver) {
    const std::string let = "Module modComponents Property Let camLinkEnabled";
    const std::string noMaxIm = sourced("Module modComponents Sub DisconnectMaxImCamera");
    const std::string noCCDSoft = sourced("Module modComponents Sub DisconnectCCDSoftCamera");
    const std::string heldByMaxIm =
        joinLines({"CCDSoft.Camera Error -2147352567: The camera is in use by MaxIm DL", let});
    const std::string heldByCCDSoft =
        joinLines({"MaxIm.CCDCamera Error -2147352567: The camera is in use by CCDSoft", let});
    const struct {
        const char* why;
        const char* from;
        Prepare prepare;
        Lines logged;
        bool linked;
    } cases[] = {
        {"to the second", "MaxIm", asItIs, texts("CCDSoft V 5.00.205 is the Imaging Software"), true},
        {"to the first", "CCDSoft", asItIs, texts("MaxIm DL/CCD V 4.56 is the Imaging Software"), true},
        {"the first doesn't let go", "MaxIm", broken(kMaxIm, "LinkEnabled"), texts(noMaxIm, heldByMaxIm),
         false},
        {"the first can't be asked", "MaxIm", broken(kMaxIm, "create"), kLet.logged, false},
        {"the second doesn't let go", "CCDSoft", broken(kCCDSoft, "Disconnect"),
         texts(noCCDSoft, heldByCCDSoft), false},
        {"the second can't be asked", "CCDSoft", broken(kCCDSoft, "create"), kLet.logged, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const bool toSecond = std::string(c.from) == "MaxIm";
        const char* const option =
            toSecond ? "frmMain.optImagingSoftware(0)" : "frmMain.optImagingSoftware(1)";
        Script script = nightWith(c.from);
        c.prepare(script);
        script.click(option).waitIdle();
        script.read("frmMain.optPlateSolveMethod(1)", "link").journal("*", "before");
        script.click("frmMain.cmdExpose").waitIdle();  // tries the hand-over again
        script.journal(toSecond ? kCCDSoft : kMaxIm, "exposure").read("frmMain.cmdExpose", "expose");
        const auto result = script.run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        EXPECT_EQ(result.reply("link")["enabled"], toSecond);
        const std::string noCamera = std::string("Failed to start camera!\r\nVerify camera model in ") +
                                     (toSecond ? "CCDSoft" : "MaxIm");
        EXPECT_EQ(std::count(result.popups.begin(), result.popups.end(), noCamera), c.linked ? 0 : 1);
        EXPECT_EQ(result.reply("expose")["caption"], "Expose");
        EXPECT_THAT(result.uses("exposure"),
                    Contains(HasSubstr(toSecond ? "call TakeImage" : "call Expose")));
    }
}

// ---- whole nights

/// Of "star to target 4.2' (70 px)".
double arcMinutesToGo(const json& label) {
    constexpr const char* kBegin = "star to target ";
    const auto caption = label["caption"].get<std::string>();
    EXPECT_THAT(caption, testing::MatchesRegex("star to target [0-9.]+' .[0-9]+ px.")) << label["name"];
    return caption.starts_with(kBegin) ? platform::leadingNumber(caption.substr(std::string(kBegin).size()))
                                       : NAN;
}

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
            const std::string name = adjuster;
            script.click("frmMain.cmdNext").advance(1).waitForNext().advance(4);
            script.read("frmMain.lblStarToTarget", name + " before")
                .put("AxisSimulator.Telescope", adjuster, 0)
                .advance(4);
            script.read("frmMain.lblStarToTarget", name + " turned");
            script.read("frmMain.gaugeStarToTarget", name + " left");
            script.click("frmMain.cmdNext").advance(6);
        }
        script.read("frmMain.lblStarToTarget", "over");
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
        for (const std::string adjuster : {"PolarAzimuthError", "PolarElevationError"}) {
            const double before = arcMinutesToGo(result.reply(adjuster + " before"));
            const double turned = arcMinutesToGo(result.reply(adjuster + " turned"));
            if (c.azimuth == 0) {
                EXPECT_LT(before, 0.5) << "there was nothing to correct";
                continue;
            }
            EXPECT_GT(before, 1);
            EXPECT_LT(turned, 0.2 * before) << "the adjuster was turned by what the axis was off";
            EXPECT_NEAR(result.reply(adjuster + " left")["value"].get<double>(), 1000 * turned / before, 30);
        }
        EXPECT_EQ(result.reply("over")["caption"], "");
    }
}

TEST(Imaging, ExposesWithTheGreatestBinningThatTheCameraTakes) {
    Script script = nightWith("BuiltIn");
    script.setting("Solve", "CamBin", "8");
    script.click("frmMain.cmdExpose").waitIdle();
    script.send({{"id", "width"}, {"do", "automation"}, {"object", "Vantrel.Document"}, {"get", "XSize"}});
    const auto result = script.run();
    EXPECT_EQ(result.reply("width")["value"], 96 / 4);
    EXPECT_THAT(result.log,
                Contains("Camera binning 8 is more than the camera takes: it is 4 from now on, and "
                         "the image scale has to be that of it"));
}

// ---- what is shown

TEST(ShownImage, IsSavedWithItsMarks) {
    for (const char* driver : {"ScopeSim.Telescope", "AxisSimulator.Telescope"}) {
        SCOPED_TRACE(driver);
        const vantrel::test::TempFolder folder;
        const auto file = folder / "shown.fit";
        Script script = nightWith("MaxIm");
        script.setting("Main", "MyTelescopeID", driver).setting("Solve", "CamBin", "1");
        script.check("frmMain.chkCrossHairEnable", 1).click("frmMain.cmdExpose").waitIdle();
        script.send({{"do", "image"}, {"save", file.string()}});
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
}

}  // namespace
}  // namespace vantrel::headless
