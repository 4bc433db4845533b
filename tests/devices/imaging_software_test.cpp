#include "devices/imaging_software.h"

#include <gmock/gmock.h>

#include "devices/device_world.h"
#include "platform/color.h"

namespace vantrel::devices {
namespace {

using test::ImagingWorld;
using testing::ElementsAre;

using Shown = test::RecordingMessages::Shown;
using Strings = std::vector<std::string>;
using Notes = std::vector<Shown>;

struct ChoiceWorld : ImagingWorld {
    /// Installs programs by their initials: "MC" is both.
    explicit ChoiceWorld(const std::string& installed = "MC",
                         const std::optional<std::string>& fileVersion = "5.00.73") {
        if (installed.find('M') != std::string::npos) installMaxIm();
        if (installed.find('C') != std::string::npos) installCCDSoft(fileVersion);
        messages.secondsToShow = 7;
    }
    std::string stored() { return settings.GetSetting("PolarAlign", "ImagingSoftware", "nothing"); }
    void store(const std::string& program) { settings.SaveSetting("PolarAlign", "ImagingSoftware", program); }

    platform::Button cmdExpose{main, "cmdExpose", "Expose"};
    platform::OptionGroup methods;
    platform::OptionButton optPinPoint{main, methods, "optPlateSolveMethod(0)", "PinPoint"};
    platform::OptionButton optAutoAstrometry{main, methods, "optPlateSolveMethod(1)", "AutoAstrometry"};
    frmSelectCCSoftware dialog{screen};
    ImagingSoftwareChoice choice{services, desktop, programs,
                                 windows,  link,    {panel, cmdExpose, optPinPoint, optAutoAstrometry},
                                 dialog};
};

// ---- which program

TEST(ImagingSoftwareChoice, PrefersTheOneThatIsOpenToTheStoredOne) {
    const struct {
        const char* open;  // initials of the programs whose windows are open
        const char* before;
        const char* program;
    } rows[] = {
        {"", "CCDSoft", "CCDSoft"},   {"M", "CCDSoft", "MaxIm"}, {"C", "NeedToSelect", "CCDSoft"},
        {"MC", "CCDSoft", "CCDSoft"}, {"", "Other", "Other"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.before << ", open: " << row.open);
        ChoiceWorld world;
        world.store(row.before);
        if (std::string(row.open).find('M') != std::string::npos) world.openMaxIm();
        if (std::string(row.open).find('C') != std::string::npos) world.openCCDSoft();
        world.choice.startUp();
        EXPECT_EQ(world.programs.ImagingSoftware, row.program);
        EXPECT_EQ(world.stored(), row.program);
        EXPECT_EQ(world.panel.optMaxIm.selected(), world.programs.usesMaxIm());
        EXPECT_EQ(world.panel.optCCDSoft.selected(), world.programs.usesCCDSoft());
        EXPECT_FALSE(world.dialog.shown());
    }
}

TEST(ImagingSoftwareChoice, LaunchesOnceAtStartUp) {
    ChoiceWorld world("M");
    world.choice.startUp();
    EXPECT_THAT(world.log.lines, ElementsAre("MaxIm DL/CCD V 4.56 is the Imaging Software"));
    EXPECT_EQ(world.stored(), "MaxIm");
    EXPECT_EQ(world.desktop.topLevelWindows().size(), 2U) << "one main window and its dialog";
}

TEST(ImagingSoftwareChoice, AsksUntilThereIsAnAnswer) {
    ChoiceWorld world;
    const auto close = world.loop.after(platform::Milliseconds{4500}, [&] {
        EXPECT_FALSE(world.dialog.cmdImagingSoftwareOK.click()) << "disabled until an option is chosen";
        world.dialog.closeByOperator();  // is no answer
    });
    const auto choose = world.loop.after(platform::Milliseconds{7500}, [&] {
        world.dialog.optCCDSoft.click();
        EXPECT_TRUE(world.dialog.cmdImagingSoftwareOK.click());
    });
    world.choice.startUp();
    EXPECT_NEAR(world.elapsed(), 8.5, 1);
    EXPECT_FALSE(world.dialog.loaded());
    EXPECT_EQ(world.stored(), "CCDSoft");

    ChoiceWorld ending;
    const auto end =
        ending.loop.after(platform::Milliseconds{2500}, [&] { ending.state.AppUnloading = true; });
    ending.choice.startUp();
    EXPECT_LE(ending.elapsed(), 4);
}

TEST(ImagingSoftwareChoice, RestrictsThePlateSolveMethods) {
    ChoiceWorld world;
    world.optAutoAstrometry.select();
    world.panel.optMaxIm.select();
    EXPECT_TRUE(world.optPinPoint.selected());
    EXPECT_FALSE(world.optAutoAstrometry.enabled());
    world.panel.optCCDSoft.select();
    EXPECT_TRUE(world.optAutoAstrometry.enabled());
    EXPECT_EQ(world.stored(), "CCDSoft");
}

TEST(ImagingSoftwareChoice, TheLastChoiceCountsThatIsMadeWhileAProgramIsWaitedFor) {
    struct Case {
        const char* why;
        bool maxImFirst;
        std::function<void(ChoiceWorld&)> prepare;
    };
    const auto missing = [](ChoiceWorld& world) { world.registry.uninstall("CCDSoft.Camera"); };
    const auto withoutWindow = [](ChoiceWorld& world) {
        world.desktop.installProgram(world.kCCDSoftPath, {nullptr, "5.01.0"});
    };
    const auto tooOld = [](ChoiceWorld& world) { world.fail("MaxIm.CCDCamera", "DisableAutoShutdown", 438); };
    for (const Case& c :
         {Case{"CCDSoft is missing", false, missing}, Case{"CCDSoft shows no window", false, withoutWindow},
          Case{"MaxIm is too old", true, tooOld}}) {
        SCOPED_TRACE(c.why);
        ChoiceWorld world;
        c.prepare(world);
        world.main.show();
        auto& first = c.maxImFirst ? world.panel.optMaxIm : world.panel.optCCDSoft;
        auto& second = c.maxImFirst ? world.panel.optCCDSoft : world.panel.optMaxIm;
        const auto choose = world.loop.after(platform::Milliseconds{2500}, [&] { second.click(); });
        first.select();
        EXPECT_EQ(world.programs.usesCCDSoft(), c.maxImFirst);
        EXPECT_EQ(world.optAutoAstrometry.enabled(), c.maxImFirst);
        EXPECT_EQ(world.programs.ccdSoftCamera != nullptr, c.maxImFirst);
    }
}

TEST(ImagingSoftwareChoice, EndsASeriesOfExposuresFirst) {
    for (const auto color :
         {platform::color::kRed, platform::color::kDarkGreen, platform::color::kButtonFace}) {
        ChoiceWorld world;
        std::string programWhenPressed = "not pressed";
        world.cmdExpose.setBackColor(color);
        world.cmdExpose.onClick = [&] { programWhenPressed = world.programs.ImagingSoftware; };
        world.panel.optMaxIm.select();
        EXPECT_EQ(programWhenPressed, color == platform::color::kButtonFace ? "not pressed" : "");
    }
}

// ---- launching

TEST(ImagingSoftwareChoice, SaysWhatItLaunchesAndGivesTimeToReadWhyNot) {
    using World = ChoiceWorld;
    using Prepare = std::function<void(World&)>;
    const Prepare asItIs = [](World&) {};
    const auto failing = [](const char* object, const char* member) -> Prepare {
        return [=](World& world) { world.fail(object, member, 438); };
    };
    const Shown maxIm{" Launching MaxIm DL \r\n Please wait ", 10}, noMaxIm{"Could not start MaxIm", 10},
        ccdSoft{" Launching CCDSoft \r\n Please wait ", 10}, noWindow{"Could not find CCDSoft Window", 5},
        connecting{" Conecting to Camera \r\n Please wait ", 10},
        tooOld{"CCDSoft Version must be\r\n5.00.73 or greater\r\n\r\n CCDSoft Launch Terminated ", 10};
    const std::string maxImLine = "MaxIm DL/CCD V 4.56 is the Imaging Software",
                      ccdSoftLine = "CCDSoft V 5.00.73 is the Imaging Software",
                      oldest = "CCDSoft Version must be 5.00.73 or greater",
                      ended = "CCDSoft launch terminated",
                      broken = "Error 438: it broke\r\nmodUtility Sub LaunchCCDSoft";
    const struct {
        const char* why;
        bool maxIm;
        Prepare prepare;
        Strings log;
        Notes shown;
        double seconds;  // that it takes
    } rows[] = {
        {"it starts", true, asItIs, Strings{maxImLine}, Notes{maxIm, connecting}, 0},
        {"it is open", true, [](World& world) { world.openMaxIm(); }, Strings{maxImLine}, Notes{connecting},
         0},
        {"its file is gone", true,
         [](World& world) {
             world.registry.install("MaxIm.CCDCamera", {nullptr, "C:\\Gone.exe", "", ""});
         },
         Strings{noMaxIm.text}, Notes{maxIm, noMaxIm}, 0},
        {"no application", true, failing("MaxIm.Application", "create"), Strings{noMaxIm.text},
         Notes{maxIm, noMaxIm}, 0},
        {"the camera doesn't link", true,
         [](World& world) { world.answer("MaxIm.CCDCamera", "LinkEnabled", false); }, Strings{maxImLine},
         Notes{maxIm, connecting, {"Failed to start camera!\r\nVerify camera model in MaxIm", 7}}, 3},
        {"too old for scripting", true, failing("MaxIm.CCDCamera", "DisableAutoShutdown"),
         Strings{maxImLine, "Your MaxIm DL Version does not support Scripting",
                 "MaxIm DL Version must be 2.06 or greater", "MaxIm DL Camera could not be Connected"},
         Notes{maxIm,
               connecting,
               {"MaxIm Version must be\r\n2.0.6 or greater\r\n\r\n MaxIm Camera Not Connected ", 10}},
         10},
        {"it starts", false, asItIs, Strings{ccdSoftLine, noWindow.text},
         Notes{noWindow, ccdSoft, connecting}, 0},
        {"not installed", false, [](World& world) { world.registry.uninstall("CCDSoft.Camera"); },
         Strings{"Could not find CCDSoft on this computer"}, Notes{{"Could not find CCDSoft", 10}}, 10},
        {"too old", false, [](World& world) { world.installCCDSoft("5.00.72"); },
         Strings{"You are using CCDSoft Version 5.00.72", oldest, ended}, Notes{tooOld}, 10},
        {"no version record", false, [](World& world) { world.installCCDSoft(std::nullopt); },
         Strings{"** Function FileVersionIsRecent error: Not a 32-bit executable! **",
                 "You are using CCDSoft Version ", oldest, ended},
         Notes{tooOld}, 10},
        {"its file is gone, but any version will do", false,
         [](World& world) {
             world.settings.SaveSetting("PolarAlign", "ImagingSWVersionCheck", "0");
             world.installCCDSoft("", "C:\\Gone.exe");
         },
         Strings{"CCDSoft V Unknown is the Imaging Software", noWindow.text,
                 "Unable to open C:\\Gone.exe because of error 2"},
         Notes{noWindow, ccdSoft, connecting}, 0},
        {"the camera doesn't link", false, [](World& world) { world.answer("CCDSoft.Camera", "State", 3); },
         Strings{ccdSoftLine, noWindow.text},
         Notes{
             noWindow, ccdSoft, connecting, {"Failed to start camera!\r\nVerify camera model in CCDSoft", 7}},
         3},
        {"no camera object", false, failing("CCDSoft.Camera", "create"),
         Strings{ccdSoftLine, noWindow.text, broken}, Notes{noWindow, ccdSoft, connecting, {broken, 5}}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        World world;
        row.prepare(world);
        (row.maxIm ? world.panel.optMaxIm : world.panel.optCCDSoft).select();
        EXPECT_EQ(world.log.lines, row.log);
        EXPECT_EQ(world.messages.shown, row.shown);
        EXPECT_NEAR(world.elapsed(), row.seconds, 0.01);
    }
}

TEST(ImagingSoftwareChoice, SaysThatNoneIsInstalled) {
    ChoiceWorld world("");
    world.choice.startUp();
    EXPECT_THAT(world.log.lines, ElementsAre("Neither MaxIm DL/CCD nor CCDSoft can be found",
                                             "You must install your Imaging Software"));
    EXPECT_EQ(
        world.messages.shown.back().text,
        "Neither MaxIm DL/CCD\r\n nor CCDSoft can be found \r\nYou must install your\r\nImaging Software");
    EXPECT_EQ(world.stored(), "nothing");
}

TEST(ImagingSoftwareChoice, WaitsForTheWindowAndTheProgram) {
    ChoiceWorld world;
    platform::TimerHandle opens;
    bool idle = false;
    const auto becomesIdle = world.loop.after(platform::Milliseconds{5500}, [&] { idle = true; });
    world.desktop.installProgram(
        world.kCCDSoftPath,
        {[&] { opens = world.loop.after(platform::Milliseconds{2500}, [&] { world.openCCDSoft(); }); },
         "5.01.0", [&] { return idle; }});
    world.panel.optCCDSoft.select();
    EXPECT_NEAR(world.elapsed(), 6, 0.01);
    EXPECT_TRUE(world.camera.linked);

    ChoiceWorld closing;
    closing.desktop.installProgram(closing.kCCDSoftPath, {nullptr, "5.01.0"});
    const auto close =
        closing.loop.after(platform::Milliseconds{2500}, [&] { closing.state.AppUnloading = true; });
    closing.panel.optCCDSoft.select();
    EXPECT_NEAR(closing.elapsed(), 3, 0.01) << "the window never comes, but the program ends";
    EXPECT_EQ(closing.programs.ccdSoftCamera, nullptr);
}

TEST(ImagingSoftwareChoice, BringsTheLaunchedProgramForward) {
    for (const bool maxIm : {true, false}) {
        ChoiceWorld world;
        world.settings.SaveSetting("PolarAlign", "EnableRestoreImagingSW", "1");
        maxIm ? world.openMaxIm() : world.openCCDSoft();
        world.desktop.open({"Vantrel", "Frame"});
        (maxIm ? world.panel.optMaxIm : world.panel.optCCDSoft).select();
        EXPECT_EQ(world.desktop.topLevelWindows().front(), maxIm ? world.maxImMain : world.ccdSoftMain);
        EXPECT_EQ(world.messages.open, std::nullopt) << "the notice is closed at the end";
    }
}

TEST(ImagingSoftwareChoice, ComparesVersions) {
    const struct {
        const char* recorded;
        bool recent;
        const char* version;
    } rows[] = {{"5.00.72", false, "5.00.72"},
                {"5.00.73", true, "5.00.73"},
                {"5.00.73.1", true, "5.00.73.1"},
                {"5.01.0", true, "5.01.0"},
                {"6.0.0", true, "6.0.0"},
                {"4.99.99", false, "4.99.99"},
                {"5, 0, 0, 73", false, "5. 0. 0"},
                {"5, 0, 73, 0", true, "5. 0. 73"},
                {"5", false, "5"},
                {"", false, ""}};
    for (const auto& row : rows) {
        ChoiceWorld world("C", row.recorded);
        const auto test = world.choice.FileVersionIsRecent(world.kCCDSoftPath, "5.00.73");
        EXPECT_EQ(test.recent, row.recent) << row.recorded;
        EXPECT_EQ(test.version, row.version) << row.recorded;
    }
}

// ---- windows

TEST(ImagingWindows, FindsTheMainWindowsByTheirTitles) {
    struct Case {
        Strings titles;  // the foremost last
        const char* maxIm;
        const char* ccdSoft;
    };
    for (const Case& c : {
             Case{{}, "", ""},
             Case{{"MaxIm DL Pro 4", "CCDSoft"}, "MaxIm DL Pro 4", "CCDSoft"},
             Case{{"About MaxIm DL", "maxim dl"}, "", ""},
             Case{{"CCDSoft", "CCDSoft Image 1", "CCDSoft App", "CCDSoft Server"}, "", "CCDSoft"},
             Case{{"CCDSoft - [Image 1]", "CCDSoft App"}, "", "CCDSoft - [Image 1]"},
             Case{{"CCDSoft Server"}, "", ""},
         }) {
        ImagingWorld world;
        for (const std::string& title : c.titles) world.desktop.open({title, "Frame"});
        SCOPED_TRACE(testing::PrintToString(c.titles));
        EXPECT_EQ(world.desktop.titleOf(world.windows.FindMaxImMainWindow()), c.maxIm);
        EXPECT_EQ(world.desktop.titleOf(world.windows.FindCCDSoftWindow()), c.ccdSoft);
        if (*c.ccdSoft == 0) {
            EXPECT_THAT(world.log.lines, ElementsAre("Could not find CCDSoft Window"));
            EXPECT_EQ(world.messages.shown.back(),
                      (test::RecordingMessages::Shown{"Could not find CCDSoft Window", 5}));
        }
    }
}

TEST(ImagingWindows, FindsTheCameraDialogOfEachVersion) {
    const struct {
        double version;
        const char* title;
        bool owned;
        const char* missing;
    } rows[] = {
        {4.56, "MaxIm CCD", true, ""}, {5, "Camera Control", true, ""},    {5.02, "MaxIm CCD", true, "CCD"},
        {4.56, "Other", true, "CCD"},  {4.56, "MaxIm CCD", false, "Main"},  // stands alone
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.title << " of version " << row.version);
        ImagingWorld world;
        world.maxImVersion = row.version;
        world.installMaxIm();
        const auto main = world.desktop.open({"MaxIm DL", "Frame"});
        world.desktop.open({row.title, "#32770", 0, row.owned ? main : 0});
        const std::string missing = row.missing;
        EXPECT_EQ(world.windows.FindMaxImCameraWindow(), missing.empty() ? main : 0);
        EXPECT_EQ(world.log.lines,
                  missing.empty() ? Strings{} : Strings{"Could not find MaxIm " + missing + " Window"});
    }
}

TEST(ImagingWindows, BringsTheProgramInUseToTheFront) {
    struct Case {
        const char* why;
        const char* program;
        bool minimised, maximised, inFront, stillMaximised;
    };
    for (const Case& c : {
             Case{"minimised", "CCDSoft", true, false, true, false},
             Case{"maximised", "CCDSoft", false, true, true, true},
             Case{"normal", "MaxIm", false, false, true, false},
             Case{"no program in use", "NeedToSelect", true, false, false, false},
         }) {
        SCOPED_TRACE(c.why);
        ImagingWorld world;
        world.programs.ImagingSoftware = c.program;
        world.openMaxIm();
        world.openCCDSoft();
        const auto window = world.programs.usesMaxIm() ? world.maxImMain : world.ccdSoftMain;
        world.desktop.find(window)->minimised = c.minimised;
        world.desktop.find(window)->maximised = c.maximised;
        world.desktop.open({"Vantrel", "Frame"});
        world.windows.BringImagingSWToFront();
        EXPECT_EQ(world.desktop.topLevelWindows().front() == window, c.inFront);
        EXPECT_EQ(world.desktop.minimised(window), c.minimised && !c.inFront);
        EXPECT_EQ(world.desktop.maximised(window), c.stillMaximised);
    }
}

TEST(ImagingWindows, ReadsTheConnectButton) {
    struct Case {
        const char* why;
        const char* wrong;  // window that isn't there
        int state;
        bool connected;
        Strings log;
    };
    for (const Case& c : {
             Case{"up", "", 0, false, {}},
             Case{"ticked", "", 1, true, {}},
             Case{"held down", "", 4, true, {}},
             Case{"up, but has the focus", "", 8, false, {}},
             Case{"no dialog", "dialog", 1, false, {"Could not find MaxIm CCD Window"}},
             Case{"another tab is shown", "setup", 1, false, {"Could not find MaxIm CCD Setup Tab"}},
             Case{"not told",
                  "desktop",
                  1,
                  false,
                  {" Error 5: Invalid procedure call or argument\r\nmodUtility Function "
                   "MaxImCameraIsConnected"}},
         }) {
        ImagingWorld world;
        world.openMaxIm();
        world.desktop.find(world.connectButton)->buttonState = c.state;
        if (c.wrong == std::string("dialog")) world.desktop.close(world.cameraDialog);
        if (c.wrong == std::string("setup")) world.desktop.close(world.setupTab);
        world.desktop.refuses = c.wrong == std::string("desktop");
        EXPECT_EQ(world.windows.MaxImCameraIsConnected(), c.connected) << c.why;
        EXPECT_EQ(world.log.lines, c.log) << c.why;
        ASSERT_EQ(world.messages.shown.size(), c.log.size()) << c.why;
        if (!c.log.empty()) {
            EXPECT_EQ(world.messages.shown.back(), (test::RecordingMessages::Shown{c.log.back(), 5}));
        }
    }
}

}  // namespace
}  // namespace vantrel::devices
