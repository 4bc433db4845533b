#include "devices/imaging_software.h"

#include <gmock/gmock.h>

#include "devices/imaging_world.h"
#include "platform/color.h"

namespace vantrel::devices {
namespace {

using test::ImagingWorld;
using testing::ElementsAre;

using Strings = std::vector<std::string>;
using Shown = test::RecordingMessages::Shown;

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

const std::string kMaxImLine = "MaxIm DL/CCD V 4.56 is the Imaging Software";
const std::string kCCDSoftLine = "CCDSoft V 5.00.73 is the Imaging Software";
const Shown kLaunchingMaxIm{" Launching MaxIm DL \r\n Please wait ", 10};
const Shown kLaunchingCCDSoft{" Launching CCDSoft \r\n Please wait ", 10};
const Shown kConnecting{" Conecting to Camera \r\n Please wait ", 10};

// ---- which program

TEST(ImagingSoftwareChoice, DecidesAtStartUp) {
    struct Case {
        const char* why;
        const char* installed;
        const char* open;  // initials of the programs whose windows are open
        const char* before;
        const char* program;
        const char* stored;
    };
    for (const Case& c : {
             Case{"only MaxIm is installed", "M", "", "NeedToSelect", "MaxIm", "MaxIm"},
             Case{"only CCDSoft is installed", "C", "", "NeedToSelect", "CCDSoft", "CCDSoft"},
             Case{"stored", "MC", "", "CCDSoft", "CCDSoft", "CCDSoft"},
             Case{"the open one wins", "MC", "M", "CCDSoft", "MaxIm", "MaxIm"},
             Case{"the open one, nothing stored", "MC", "C", "NeedToSelect", "CCDSoft", "CCDSoft"},
             Case{"both open: the stored one", "MC", "MC", "CCDSoft", "CCDSoft", "CCDSoft"},
             Case{"neither is installed", "", "", "NeedToSelect", "NeedToSelect", "NeedToSelect"},
             Case{"something else is stored", "MC", "", "Other", "Other", "Other"},
         }) {
        SCOPED_TRACE(c.why);
        ChoiceWorld world(c.installed);
        world.store(c.before);
        if (std::string(c.open).find('M') != std::string::npos) world.openMaxIm();
        if (std::string(c.open).find('C') != std::string::npos) world.openCCDSoft();
        world.choice.startUp();
        EXPECT_EQ(world.programs.ImagingSoftware, c.program);
        EXPECT_EQ(world.stored(), c.stored);
        EXPECT_EQ(world.panel.optMaxIm.selected(), world.programs.usesMaxIm());
        EXPECT_EQ(world.panel.optCCDSoft.selected(), world.programs.usesCCDSoft());
        EXPECT_FALSE(world.dialog.shown());
        const bool launched = world.log.has(kMaxImLine) || world.log.has(kCCDSoftLine);
        EXPECT_EQ(launched, world.programs.usesMaxIm() || world.programs.usesCCDSoft());
    }
}

TEST(ImagingSoftwareChoice, LaunchesOnceAtStartUp) {
    ChoiceWorld world("M");
    world.choice.startUp();
    EXPECT_EQ(std::count(world.log.lines.begin(), world.log.lines.end(), kMaxImLine), 1);
    EXPECT_EQ(world.desktop.topLevelWindows().size(), 2U) << "one main window and its dialog";
}

TEST(ImagingSoftwareChoice, AsksWhenBothAreInstalled) {
    ChoiceWorld world;
    bool okBeforeChoice = true;
    const auto close = world.loop.after(platform::Milliseconds{4500}, [&] {
        okBeforeChoice = world.dialog.cmdImagingSoftwareOK.click();
        world.dialog.closeByOperator();  // is no answer
    });
    const auto choose = world.loop.after(platform::Milliseconds{7500}, [&] {
        world.dialog.optCCDSoft.click();
        EXPECT_TRUE(world.dialog.cmdImagingSoftwareOK.click());
    });
    world.choice.startUp();
    EXPECT_FALSE(okBeforeChoice) << "disabled until an option is chosen";
    EXPECT_GE(world.elapsed(), 7.5);
    EXPECT_LE(world.elapsed(), 9.5);
    EXPECT_FALSE(world.dialog.loaded());
    EXPECT_EQ(world.stored(), "CCDSoft");
    EXPECT_TRUE(world.panel.optCCDSoft.selected());
    EXPECT_TRUE(world.log.has(kCCDSoftLine));
}

TEST(ImagingSoftwareChoice, StopsAskingWhenTheProgramEnds) {
    ChoiceWorld world;
    const auto close =
        world.loop.after(platform::Milliseconds{2500}, [&] { world.state.AppUnloading = true; });
    world.choice.startUp();
    EXPECT_LE(world.elapsed(), 4);
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

struct LaunchCase {
    const char* why;
    std::function<void(ChoiceWorld&)> prepare;
    Strings log;
    std::vector<Shown> shown;
    bool linked;
    double seconds;  // that it takes
};

void checkLaunch(const LaunchCase& c, ChoiceWorld& world, platform::OptionButton& option) {
    SCOPED_TRACE(c.why);
    c.prepare(world);
    option.select();
    EXPECT_EQ(world.log.lines, c.log);
    EXPECT_EQ(world.messages.shown, c.shown);
    EXPECT_EQ(world.camera.linked, c.linked);
    EXPECT_NEAR(world.elapsed(), c.seconds, 0.01);
}

TEST(ImagingSoftwareChoice, LaunchesMaxImOrSaysWhyNot) {
    const Shown noStart{"Could not start MaxIm", 10};
    const Shown noCamera{"Failed to start camera!\r\nVerify camera model in MaxIm", 7};
    const Shown noScripting{"MaxIm Version must be\r\n2.0.6 or greater\r\n\r\n MaxIm Camera Not Connected ",
                            10};
    for (const LaunchCase& c : {
             LaunchCase{
                 "started", [](ChoiceWorld&) {}, {kMaxImLine}, {kLaunchingMaxIm, kConnecting}, true, 0},
             {"running already",
              [](ChoiceWorld& world) { world.openMaxIm(); },
              {kMaxImLine},
              {kConnecting},
              true,
              0},
             {"not installed",
              [](ChoiceWorld& world) { world.registry.uninstall("MaxIm.CCDCamera"); },
              {},
              {},
              false,
              0},
             {"its file is gone",
              [](ChoiceWorld& world) {
                  world.registry.install("MaxIm.CCDCamera", {nullptr, "C:\\Gone.exe", "", ""});
              },
              {"Could not start MaxIm"},
              {kLaunchingMaxIm, noStart},
              false,
              0},
             {"it can't be asked",
              [](ChoiceWorld& world) { world.fail("MaxIm.Application", "create", 429); },
              {"Could not start MaxIm"},
              {kLaunchingMaxIm, noStart},
              false,
              0},
             {"the camera doesn't link",
              [](ChoiceWorld& world) { world.answer("MaxIm.CCDCamera", "LinkEnabled", false); },
              {kMaxImLine},
              {kLaunchingMaxIm, kConnecting, noCamera},
              false,
              3},
             {"too old for scripting",
              [](ChoiceWorld& world) { world.fail("MaxIm.CCDCamera", "DisableAutoShutdown", 438); },
              {kMaxImLine, "Your MaxIm DL Version does not support Scripting",
               "MaxIm DL Version must be 2.06 or greater", "MaxIm DL Camera could not be Connected"},
              {kLaunchingMaxIm, kConnecting, noScripting},
              false,
              10},
         }) {
        ChoiceWorld world;
        checkLaunch(c, world, world.panel.optMaxIm);
        EXPECT_EQ(world.stored(), "MaxIm");
        if (c.linked) {
            EXPECT_EQ(world.messages.open, std::nullopt) << "the notice is closed at the end";
        }
    }
}

TEST(ImagingSoftwareChoice, LaunchesCCDSoftOrSaysWhyNot) {
    const std::string noWindow = "Could not find CCDSoft Window";
    const Shown noWindowShown{noWindow, 5};
    const Shown noCamera{"Failed to start camera!\r\nVerify camera model in CCDSoft", 7};
    const Shown tooOld{"CCDSoft Version must be\r\n5.00.73 or greater\r\n\r\n CCDSoft Launch Terminated ",
                       10};
    const std::vector<Shown> launching = {noWindowShown, kLaunchingCCDSoft, kConnecting};
    const auto withVersion = [](const std::optional<std::string>& version) {
        return [=](ChoiceWorld& world) { world.installCCDSoft(version); };
    };
    for (const LaunchCase& c : {
             LaunchCase{"started", [](ChoiceWorld&) {}, {kCCDSoftLine, noWindow}, launching, true, 0},
             {"running already",
              [](ChoiceWorld& world) { world.openCCDSoft(); },
              {kCCDSoftLine},
              {kConnecting},
              true,
              0},
             {"not installed",
              [](ChoiceWorld& world) { world.registry.uninstall("CCDSoft.Camera"); },
              {"Could not find CCDSoft on this computer"},
              {{"Could not find CCDSoft", 10}},
              false,
              10},
             {"too old",
              withVersion("5.00.72"),
              {"You are using CCDSoft Version 5.00.72", "CCDSoft Version must be 5.00.73 or greater",
               "CCDSoft launch terminated"},
              {tooOld},
              false,
              10},
             {"no version record",
              withVersion(std::nullopt),
              {"** Function FileVersionIsRecent error: Not a 32-bit executable! **",
               "You are using CCDSoft Version ", "CCDSoft Version must be 5.00.73 or greater",
               "CCDSoft launch terminated"},
              {tooOld},
              false,
              10},
             {"its file is gone, but its class is there",
              [](ChoiceWorld& world) {
                  world.settings.SaveSetting("PolarAlign", "ImagingSWVersionCheck", "0");
                  world.desktop.installProgram(world.kCCDSoftPath, {});
                  world.registry.install("CCDSoft.Camera",
                                         {[&world] {
                                              return std::make_shared<test::FakeCCDSoftCamera>(world.loop,
                                                                                               world.camera);
                                          },
                                          "C:\\Gone.exe", "", ""});
              },
              {"CCDSoft V Unknown is the Imaging Software", noWindow,
               "Unable to open C:\\Gone.exe because of error 2"},
              launching,
              true,
              0},
             {"the camera doesn't link",
              [](ChoiceWorld& world) { world.answer("CCDSoft.Camera", "State", 3); },
              {kCCDSoftLine, noWindow},
              {noWindowShown, kLaunchingCCDSoft, kConnecting, noCamera},
              true,
              3},
             {"the camera can't be had",
              [](ChoiceWorld& world) { world.fail("CCDSoft.Camera", "create", 429); },
              {kCCDSoftLine, noWindow, "Error 429: it broke\r\nmodUtility Sub LaunchCCDSoft"},
              {noWindowShown,
               kLaunchingCCDSoft,
               kConnecting,
               {"Error 429: it broke\r\nmodUtility Sub LaunchCCDSoft", 5}},
              false,
              0},
         }) {
        ChoiceWorld world;
        checkLaunch(c, world, world.panel.optCCDSoft);
        EXPECT_EQ(world.stored(), "CCDSoft");
    }
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
    ChoiceWorld world;
    world.settings.SaveSetting("PolarAlign", "EnableRestoreImagingSW", "1");
    world.openCCDSoft();
    world.desktop.open({"Vantrel", "Frame"});
    world.panel.optCCDSoft.select();
    EXPECT_EQ(world.desktop.topLevelWindows().front(), world.ccdSoftMain);
}

TEST(ImagingSoftwareChoice, ComparesVersions) {
    struct Case {
        const char* recorded;
        bool recent;
        const char* version;
    };
    for (const Case& c : {
             Case{"5.00.72", false, "5.00.72"},
             Case{"5.00.73", true, "5.00.73"},
             Case{"5.00.73.1", true, "5.00.73.1"},
             Case{"5.01.0", true, "5.01.0"},
             Case{"6.0.0", true, "6.0.0"},
             Case{"4.99.99", false, "4.99.99"},
             Case{"5, 0, 0, 73", false, "5. 0. 0"},
             Case{"5, 0, 73, 0", true, "5. 0. 73"},
             Case{"5", false, "5"},
             Case{"", false, ""},
         }) {
        ChoiceWorld world("C", c.recorded);
        const auto test = world.choice.FileVersionIsRecent(world.kCCDSoftPath, "5.00.73");
        EXPECT_EQ(test.recent, c.recent) << c.recorded;
        EXPECT_EQ(test.version, c.version) << c.recorded;

        world.settings.SaveSetting("PolarAlign", "ImagingSWVersionCheck", "0");
        const auto unchecked = world.choice.FileVersionIsRecent(world.kCCDSoftPath, "5.00.73");
        EXPECT_TRUE(unchecked.recent);
        EXPECT_EQ(unchecked.version, "Unknown");
    }
}

}  // namespace
}  // namespace vantrel::devices
