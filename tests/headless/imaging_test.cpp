// The imaging programs through the operator protocol: choice, launch, link, exposures, marks and files, and
// what the window and the log say when any member of them fails.

#include <algorithm>
#include <cmath>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "observatory/sky/fits_image.h"
#include "platform/text.h"
#include "script.h"

namespace vantrel::headless {
namespace {

using nlohmann::json;
using platform::joinLines;
using test::Script;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

using Strings = std::vector<std::string>;
using Prepare = std::function<void(Script&)>;

constexpr const char* kMaxIm = "MaxIm.CCDCamera";
constexpr const char* kApplication = "MaxIm.Application";
constexpr const char* kDocument = "MaxIm.Document";
constexpr const char* kCCDSoft = "CCDSoft.Camera";
constexpr const char* kImage = "CCDSoft.Image";

Prepare broken(const char* object, const char* member, int after = 0, int times = 1, int number = 7) {
    return [=](Script& s) { s.fail(object, member, number, "Src", "Broken", after, times); };
}
Prepare answering(const char* object, const char* member, const json& value, int after = 0, int times = -1) {
    return [=](Script& s) { s.giveBack(object, member, value, after, times); };
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

void expectPopups(const Script::Result& result, const std::vector<Popup>& wanted) {
    for (const Popup& popup : wanted) {
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

constexpr double kReport = 5;       // seconds
constexpr double kDisplayTime = 3;  // the field's

std::string sourced(const char* label) { return joinLines({"Src Error 7: Broken", label}); }
std::string unsourced(const char* label) { return joinLines({"Error 7: Broken", label}); }

// ---- exposures

enum class Series { kEnds, kGoesOn };

struct ExposureCase {
    const char* why;
    Prepare prepare;
    Strings logged;
    std::vector<Popup> shown;
    Series series = Series::kEnds;  // CameraFailed ends it
    double seconds = 8;             // that are looked at
};

/// A series of exposures in which something goes wrong; afterwards the window can be used.
void checkExposures(const char* program, const std::vector<ExposureCase>& cases) {
    for (const ExposureCase& c : cases) {
        SCOPED_TRACE(c.why);
        Script script = nightWith(program);
        script.type("frmMain.txtContinuousExposeDelay", "1");
        script.check("frmMain.chkExposeContinuousEnable", 1).check("frmMain.chkCrossHairEnable", 1);
        c.prepare(script);
        script.click("frmMain.cmdExpose").advance(c.seconds).read("frmMain.cmdExpose", "series");
        script.check("frmMain.chkExposeContinuousEnable", 0).waitIdle();
        script.read("frmMain.cmdExpose", "after").read("frmMain.cmdRun", "run");
        const auto result = script.run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        if (c.logged.empty()) {
            EXPECT_THAT(result.log, Not(Contains(HasSubstr("Broken"))));
        }
        expectPopups(result, c.shown);
        EXPECT_EQ(result.reply("series")["caption"], c.series == Series::kEnds ? "Expose" : "Stop Expose");
        EXPECT_EQ(result.reply("after")["caption"], "Expose");
        EXPECT_EQ(result.reply("run")["enabled"], true);
    }
}

const std::string kNoCamera =
    joinLines({"Failed to start camera!", "Verify camera model in Imaging Software"});

TEST(MaxImExposures, ReportWhatFails) {
    const std::string let = sourced("Module modComponents Property Let camLinkEnabled");
    const std::string get = sourced("Module modComponents Property Get camLinkEnabled");
    const std::string acquire = sourced("Module modComponents Sub AcquireImage");
    const std::string take = unsourced("Module modComponents sub TakePicture");
    const std::string notStarted = joinLines(
        {"Error 32768: MaxIm DL Failed to start the exposure", "Module modComponents sub TakePicture"});
    const std::string crossHair = unsourced("Module modComponents Sub CrossHair");
    std::vector<ExposureCase> cases = {
        {"the link can't be set, but is",
         broken(kMaxIm, "LinkEnabled"),
         {let},
         {{let, kReport}},
         Series::kGoesOn},
        {"the link can't be read",
         broken(kMaxIm, "LinkEnabled", 1),
         {get, kNoCamera},
         {{get, kReport}, {kNoCamera, kDisplayTime}},
         Series::kGoesOn},
        {"no camera",
         answering(kMaxIm, "LinkEnabled", false),
         {kNoCamera},
         {{kNoCamera, kDisplayTime}},
         Series::kGoesOn},
        {"the exposure doesn't start",
         answering(kMaxIm, "Expose", false),
         {notStarted},
         {{notStarted, kReport}}},
        {"the exposure fails to start", broken(kMaxIm, "Expose"), {notStarted}, {{notStarted, kReport}}},
        {"the image fails", broken(kMaxIm, "ImageReady", 3), {take}, {{take, kReport}}},
        {"aborted in the program",
         broken(kMaxIm, "ImageReady", 3, 1, 65535),
         {"Exposure Aborted"},
         {{"Exposure Aborted", kReport}}},
        {"the filter can't be read", broken(kMaxIm, "Filter", 0, -1), {}, {}, Series::kGoesOn},
        {"the application is gone for once",
         broken(kApplication, "AutofocusStatus"),
         {},
         {},
         Series::kGoesOn},
        {"the document is gone for once", broken(kDocument, "XSize", 1), {}, {}, Series::kGoesOn},
        {"no application", broken(kApplication, "create", 0, -1), {crossHair}, {}, Series::kGoesOn},
        {"no document", broken(kApplication, "CurrentDocument"), {crossHair}, {}, Series::kGoesOn},
    };
    for (const char* member : {"BinX", "BinY", "SetFullFrame", "MaxBinX", "MaxBinY"})
        cases.push_back({member, broken(kMaxIm, member), {acquire}, {{acquire, kReport}}});
    for (const char* member : {"XSize", "YSize", "StretchMax", "ImageArray"})
        cases.push_back({member, broken(kDocument, member), {crossHair}, {}, Series::kGoesOn});
    cases.push_back({"the marked image isn't taken",
                     broken(kDocument, "ImageArray", 1),
                     {crossHair},
                     {},
                     Series::kGoesOn});
    checkExposures("MaxIm", cases);
}

TEST(CCDSoftExposures, ReportWhatFails) {
    const std::string let = sourced("Module modComponents Property Let camLinkEnabled");
    const std::string get = sourced("Module modComponents Property Get camLinkEnabled");
    const std::string acquire = sourced("Module modComponents Sub AcquireImage");
    const std::string take = sourced("Module modComponents sub TakeCCDSoftImage");
    const std::string attach = sourced("Module modComponents Sub AttachCCDSoftImageToActiveImager");
    const std::string crossHair = unsourced("Module modComponents Sub CrossHair");
    std::vector<ExposureCase> cases = {
        {"connecting fails, but it is",
         broken(kCCDSoft, "Connect"),
         {let},
         {{let, kReport}},
         Series::kGoesOn},
        {"the state can't be read",
         broken(kCCDSoft, "State"),
         {get, kNoCamera},
         {{get, kReport}, {kNoCamera, kDisplayTime}},
         Series::kGoesOn},
        {"not linked",
         answering(kCCDSoft, "State", 5),
         {kNoCamera},
         {{kNoCamera, kDisplayTime}},
         Series::kGoesOn},
        {"it can't be asynchronous", broken(kCCDSoft, "Asynchronous"), {}, {}, Series::kGoesOn},
        {"whether it is asynchronous can't be read",
         broken(kCCDSoft, "Asynchronous", 1),
         {},
         {},
         Series::kGoesOn},
        {"it isn't asynchronous", answering(kCCDSoft, "Asynchronous", false), {}, {}, Series::kGoesOn},
        {"aborted in the program",
         broken(kCCDSoft, "IsExposureComplete", 3, 1, 65535),
         {"Exposure Aborted"},
         {{"Exposure Aborted", kDisplayTime}}},
        {"aborted before it began",
         broken(kCCDSoft, "TakeImage", 0, 1, 65535),
         {"Exposure Aborted"},
         {{"Exposure Aborted", kDisplayTime}}},
        {"no image object", broken(kImage, "create"), {attach}, {{attach, kReport}}, Series::kGoesOn},
        {"the image can't be attached to",
         broken(kImage, "AttachToActiveImager"),
         {attach},
         {{attach, kReport}},
         Series::kGoesOn},
        {"no open image", broken(kImage, "create", 1), {crossHair}, {}, Series::kGoesOn},
        {"the marked image isn't taken", broken(kImage, "DataArray", 1), {crossHair}, {}, Series::kGoesOn},
    };
    for (const char* member : {"AutoSaveOn", "ScreenShutter", "ToNewWindow", "AutoSaveFileFormat", "Series",
                               "ImageReduction", "Subframe"})
        cases.push_back({member, broken(kCCDSoft, member), {}, {}, Series::kGoesOn});
    for (const char* member : {"BinX", "BinY"})
        cases.push_back({member, broken(kCCDSoft, member), {acquire}, {{acquire, kReport}}});
    for (const char* member : {"Frame", "ExposureTime", "TakeImage", "IsExposureComplete"})
        cases.push_back({member, broken(kCCDSoft, member), {take}, {{take, kReport}}});
    cases.push_back(
        {"the sub-frame can't be switched", broken(kCCDSoft, "Subframe", 1), {take}, {{take, kReport}}});
    for (const char* member : {"AttachToActive", "SetActive", "Width", "Height", "DataArray", "ModifiedFlag"})
        cases.push_back({member, broken(kImage, member), {crossHair}, {}, Series::kGoesOn});
    checkExposures("CCDSoft", cases);
}

/// Seconds from the click to the report.
double secondsTo(const Script::Result& result, const std::string& line) {
    for (const json& entry : result.replies[result.replies.size() - 2]["lines"]) {
        const auto text = entry.get<std::string>();
        if (text.substr(11) != line) continue;
        return std::stod(text.substr(3, 2)) * 60 +
               std::stod(text.substr(6, 2));  // the start is at a full hour
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
        script.type("frmMain.txtContinuousExposeInterval", "5").type("frmMain.txtPostExpDelay", c.grace);
        script.giveBack(c.object, c.member, false);
        script.send({{"id", "start"}, {"do", "time"}}).journal(c.object, "before");
        script.click("frmMain.cmdExpose").waitIdle().journal(c.object, "exposure");
        script.read("frmMain.cmdExpose", "after");
        const auto result = script.run();
        const double start = result.reply("start")["seconds"];
        EXPECT_NEAR(secondsTo(result, c.report) - start, 5 + c.seconds, 1.01);
        const Strings uses = result.uses("exposure");
        EXPECT_EQ(std::count(uses.begin(), uses.end(), std::string("get ") + c.member), c.looks);
        EXPECT_EQ(std::count(uses.begin(), uses.end(), "call abort"), c.program[0] == 'C' ? 1 : 0);
        EXPECT_EQ(result.reply("after")["caption"], "Expose");
    }
}

TEST(Exposures, AskTheProgramForWhatIsSet) {
    const struct {
        const char* why;
        const char* program;
        const char* object;
        Prepare prepare;
        Strings uses;  // in this order
    } cases[] = {
        {"a light frame",
         "MaxIm",
         kMaxIm,
         [](Script&) {},
         {"put LinkEnabled true", "get LinkEnabled", "get Filter", "put BinX 1", "put BinY 1",
          "call SetFullFrame", "get MaxBinX", "get MaxBinY", "put BinX 2", "put BinY 2",
          "call Expose 1.0 1 0"}},
        {"a dark frame",
         "MaxIm",
         kMaxIm,
         [](Script& s) { s.type("frmMain.txtContinuousExposeInterval", "-2"); },
         {"call Expose 2.0 0 0"}},
        {"the program's filter",
         "MaxIm",
         kMaxIm,
         [](Script& s) { s.put(kMaxIm, "Filter", 3); },
         {"call Expose 1.0 1 3"}},
        {"the stored filter when it can't be read",
         "MaxIm",
         kMaxIm,
         [](Script& s) {
             broken(kMaxIm, "Filter")(s);
             s.send({{"do", "setting"},
                     {"section", "CurrentVersion"},
                     {"key", "D3130_EXP_FILTER"},
                     {"value", "2"}});
         },
         {"call Expose 1.0 1 2"}},
        {"set-up and exposure",
         "CCDSoft",
         kCCDSoft,
         [](Script&) {},
         {"call Connect", "get State", "put AutoSaveOn 0", "put ScreenShutter 0", "put ToNewWindow 0",
          "put Subframe 0", "put AutoSaveFileFormat 0", "put Series 1", "put ImageReduction 1", "put BinX 2",
          "put BinY 2", "put Frame 1", "put Subframe false", "put ExposureTime 1.0", "put Asynchronous true",
          "get Asynchronous", "call TakeImage", "get IsExposureComplete"}},
        {"no time at all",
         "CCDSoft",
         kCCDSoft,
         [](Script& s) { s.type("frmMain.txtContinuousExposeInterval", "0"); },
         {"put ExposureTime 0.11"}},
        {"a sub-frame",
         "CCDSoft",
         kCCDSoft,
         [](Script& s) { s.check("frmMain.chkUseCCDSoftSubFrame", 1); },
         {"put Subframe true", "put ExposureTime 1.0"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script = nightWith(c.program);
        c.prepare(script);
        script.journal(c.object, "before").click("frmMain.cmdExpose").waitIdle().journal(c.object, "uses");
        const auto result = script.run();
        const Strings uses = result.uses("uses");
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
        Strings logged;
        long aborts;
    } cases[] = {{"MaxIm", kMaxIm, {"Align Aborted"}, 0},
                 {"CCDSoft", kCCDSoft, {"Exposure aborted", "Align Aborted"}, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.program);
        Script script = nightWith(c.program);
        script.click("frmMain.cmdRun").advance(3).journal(c.object, "before").click("frmMain.cmdStop");
        script.waitIdle().journal(c.object, "stopped").read("frmMain.cmdRun", "run");
        script.click("frmMain.cmdExpose").waitIdle().journal(c.object, "again");
        script.type("frmMain.txtContinuousExposeInterval", "300").click("frmMain.cmdExpose").advance(2);
        const auto result = script.run();  // and closes the window meanwhile
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        EXPECT_THAT(result.log, Not(Contains(HasSubstr("Error"))));
        const Strings stopped = result.uses("stopped");
        EXPECT_EQ(std::count(stopped.begin(), stopped.end(), "call abort"), c.aborts);
        EXPECT_EQ(result.reply("run")["enabled"], true);
        EXPECT_THAT(result.popups, Not(Contains(HasSubstr("Error")))) << "the next exposure works";
    }
}

// ---- saving, solving, manual exposures

TEST(ManualExposures, ReportWhatFails) {
    const std::string save = sourced("modUtilities Sub SaveImageToFile");
    const std::string mismatch = "Error 13: Type mismatch\r\n";
    const Strings unsolved = {"Plate Solve failed", "Check Plate Solve Settings"};
    const auto with = [](Strings lines, const Strings& more) {
        lines.insert(lines.end(), more.begin(), more.end());
        return lines;
    };
    const struct {
        const char* why;
        const char* program;
        const char* button;
        Prepare prepare;
        Strings logged;
        std::vector<Popup> shown;
    } cases[] = {
        {"no number to expose",
         "MaxIm",
         "frmMain.cmdExpose",
         [](Script& s) { s.type("frmMain.txtContinuousExposeInterval", "abc"); },
         {mismatch + "mod cmdRun"},
         {{mismatch + "mod cmdRun", kReport}}},
        {"no number to expose and solve",
         "MaxIm",
         "frmMain.cmdExposeSolve",
         [](Script& s) { s.type("frmMain.txtExposeInterval", "abc"); },
         {"", "** Expose & Plate Solve **", mismatch + "mod cmdExposeSolve"},
         {{mismatch + "mod cmdExposeSolve", kReport}}},
        {"the image can't be saved",
         "MaxIm",
         "frmMain.cmdExposeSolve",
         broken(kMaxIm, "SaveImage"),
         with({save}, unsolved),
         {}},
        {"the path isn't taken",
         "CCDSoft",
         "frmMain.cmdExposeSolve",
         broken(kImage, "path"),
         with({save}, unsolved),
         {}},
        {"the second program can't save",
         "CCDSoft",
         "frmMain.cmdExposeSolve",
         broken(kImage, "Save"),
         with({save}, unsolved),
         {}},
        {"the plate isn't solved",
         "MaxIm",
         "frmMain.cmdExposeSolve",
         answering("PinPoint.Plate", "Solve", false),
         unsolved,
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script = nightWith(c.program);
        c.prepare(script);
        script.click(c.button).waitIdle().read("frmMain.cmdExpose", "expose").read("frmMain.cmdRun", "run");
        const auto result = script.run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        expectPopups(result, c.shown);
        if (c.shown.empty()) {
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
        script.read((std::string("frmMain.") + button).c_str(), button);
    script.read("frmMain.cmdExpose", "running").click("frmMain.cmdExpose");
    script.read("frmMain.cmdExpose", "stopping").waitIdle().journal(kMaxIm, "series");
    script.read("frmMain.cmdExpose", "idle").journal(kDocument, "marks");
    script.check("frmMain.chkCrossHairEnable", 0).read("frmMain.cmbCrossHairWidth", "width");
    const auto result = script.run();
    const auto exposures = [&](const char* name) {
        const Strings uses = result.uses(name);
        return std::count(uses.begin(), uses.end(), "call Expose 1.0 1 0");
    };
    EXPECT_EQ(exposures("single"), 1);
    EXPECT_EQ(exposures("series"), 4) << "of 1.1 s, with 0.1 s between them";
    for (const char* button : {"cmdRun", "cmdStop", "cmdNext", "cmdSkip"})
        EXPECT_EQ(result.reply(button)["enabled"], false) << button;
    EXPECT_EQ(result.reply("running")["caption"], "Stop Expose");
    EXPECT_EQ(result.reply("stopping")["caption"], "Stoping Exp.");
    EXPECT_EQ(result.reply("idle")["caption"], "Expose");
    EXPECT_EQ(result.reply("width")["enabled"], true);
    const Strings marks = result.uses("marks");
    EXPECT_EQ(std::count(marks.begin(), marks.end(), R"(put ImageArray {"height":32,"width":48})"), 4);
}

// ---- which program, and its launch

TEST(ImagingChoice, IsMadeAtTheStart) {
    const Strings mount = {"ScopeSim.Telescope", "PinPoint.Plate"};
    const auto withMount = [&](Strings programs) {
        programs.insert(programs.end(), mount.begin(), mount.end());
        return programs;
    };
    const std::string maxIm = "MaxIm DL/CCD V 4.56 is the Imaging Software";
    const std::string ccdSoft = "CCDSoft V 5.00.205 is the Imaging Software";
    const std::string launchingMaxIm = " Launching MaxIm DL \r\n Please wait ";
    const std::string launchingCCDSoft = " Launching CCDSoft \r\n Please wait ";
    const std::string connecting = " Conecting to Camera \r\n Please wait ";
    const std::string none = joinLines(
        {"Neither MaxIm DL/CCD", " nor CCDSoft can be found ", "You must install your", "Imaging Software"});
    const struct {
        const char* why;
        std::optional<Strings> installed;
        const char* stored;
        Prepare prepare;
        const char* program;  // in use
        Strings logged;
        std::vector<Popup> shown;
        Strings notShown;
    } cases[] = {
        {"the built-in one is open",
         {},
         nullptr,
         [](Script&) {},
         "MaxIm",
         {maxIm},
         {{connecting, 10}},
         {launchingMaxIm}},
        {"only MaxIm is installed",
         withMount({kMaxIm}),
         nullptr,
         [](Script&) {},
         "MaxIm",
         {maxIm},
         {{launchingMaxIm, 10}, {connecting, 10}},
         {}},
        {"only CCDSoft is installed",
         withMount({kCCDSoft}),
         nullptr,
         [](Script&) {},
         "CCDSoft",
         {ccdSoft},
         {{launchingCCDSoft, 10}, {connecting, 10}},
         {}},
        {"CCDSoft is stored",
         {},
         "CCDSoft",
         [](Script&) {},
         "CCDSoft",
         {ccdSoft},
         {{launchingCCDSoft, 10}},
         {}},
        {"any version will do",
         {},
         "CCDSoft",
         [](Script& s) { s.setting("PolarAlign", "ImagingSWVersionCheck", "0"); },
         "CCDSoft",
         {"CCDSoft V Unknown is the Imaging Software"},
         {},
         {}},
        {"neither is installed",
         mount,
         nullptr,
         [](Script&) {},
         nullptr,
         {"Neither MaxIm DL/CCD nor CCDSoft can be found", "You must install your Imaging Software"},
         {{none, 0}},
         {connecting}},
        {"the stored one isn't installed",
         mount,
         "CCDSoft",
         [](Script&) {},
         "CCDSoft",
         {"Could not find CCDSoft on this computer"},
         {{"Could not find CCDSoft", 10}},
         {connecting}},
        {"the application can't be had",
         {},
         nullptr,
         broken(kApplication, "create"),
         "MaxIm",
         {"Could not start MaxIm"},
         {{"Could not start MaxIm", 10}},
         {connecting}},
        {"the application doesn't tell its version",
         {},
         nullptr,
         broken(kApplication, "Version"),
         "MaxIm",
         {"Could not start MaxIm"},
         {{"Could not start MaxIm", 10}},
         {connecting}},
        {"no scripting",
         {},
         nullptr,
         broken(kMaxIm, "DisableAutoShutdown"),
         "MaxIm",
         {maxIm, "Your MaxIm DL Version does not support Scripting",
          "MaxIm DL Version must be 2.06 or greater", "MaxIm DL Camera could not be Connected"},
         {{"MaxIm Version must be\r\n2.0.6 or greater\r\n\r\n MaxIm Camera Not Connected ", 10}},
         {}},
        {"no camera in MaxIm",
         {},
         nullptr,
         answering(kMaxIm, "LinkEnabled", false),
         "MaxIm",
         {maxIm},
         {{"Failed to start camera!\r\nVerify camera model in MaxIm", kDisplayTime}},
         {}},
        {"no camera in CCDSoft",
         {},
         "CCDSoft",
         answering(kCCDSoft, "State", 5),
         "CCDSoft",
         {ccdSoft},
         {{"Failed to start camera!\r\nVerify camera model in CCDSoft", kDisplayTime}},
         {}},
        {"no camera object",
         {},
         "CCDSoft",
         broken(kCCDSoft, "create"),
         "CCDSoft",
         {ccdSoft, unsourced("modUtility Sub LaunchCCDSoft")},
         {{unsourced("modUtility Sub LaunchCCDSoft"), kReport}},
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Script script;
        script.setting("Main", "MyTelescopeID", "ScopeSim.Telescope");
        if (c.installed) script.installed(*c.installed);
        if (c.stored != nullptr) script.setting("PolarAlign", "ImagingSoftware", c.stored);
        c.prepare(script);
        script.waitIdle();
        script.send(
            {{"id", "stored"}, {"do", "setting"}, {"section", "PolarAlign"}, {"key", "ImagingSoftware"}});
        script.read("frmMain.optImagingSoftware(0)", "0").read("frmMain.optImagingSoftware(1)", "1");
        script.read("frmMain.cmdRun", "run");
        const auto result = script.run();
        for (const std::string& line : c.logged) EXPECT_THAT(result.log, Contains(line));
        expectPopups(result, c.shown);
        for (const std::string& text : c.notShown) EXPECT_THAT(result.popups, Not(Contains(text)));
        const json program = c.program == nullptr ? json() : json(c.program);
        EXPECT_EQ(result.reply("stored")["value"], program);
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
        Strings logged;
        bool linked;
    } cases[] = {
        {"to the second", "MaxIm", [](Script&) {}, {"CCDSoft V 5.00.205 is the Imaging Software"}, true},
        {"to the first", "CCDSoft", [](Script&) {}, {"MaxIm DL/CCD V 4.56 is the Imaging Software"}, true},
        {"the first doesn't let go", "MaxIm", broken(kMaxIm, "LinkEnabled"), {noMaxIm, heldByMaxIm}, false},
        {"the first can't be asked", "MaxIm", broken(kMaxIm, "create"), {sourced(let.c_str())}, false},
        {"the second doesn't let go",
         "CCDSoft",
         broken(kCCDSoft, "Disconnect"),
         {noCCDSoft, heldByCCDSoft},
         false},
        {"the second can't be asked", "CCDSoft", broken(kCCDSoft, "create"), {sourced(let.c_str())}, false},
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
        for (int adjustment = 0; adjustment < 2; ++adjustment)
            script.click("frmMain.cmdNext").advance(1).waitForNext().click("frmMain.cmdNext").advance(6);
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
        const auto image = observatory::FitsImage::open(file);
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
