#include "devices/imaging_windows.h"

#include <gmock/gmock.h>

#include "devices/device_world.h"

namespace vantrel::devices {
namespace {

using test::ImagingWorld;
using testing::ElementsAre;

using Strings = std::vector<std::string>;

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

TEST(ImagingWindows, CountsTitles) {
    ImagingWorld world;
    for (const char* title : {"Log", "log", "Message Log", "Other"}) world.desktop.open({title, "Frame"});
    struct Case {
        bool partial, caseSensitive;
        int count;
    };
    for (const Case& c : {Case{false, true, 1}, {false, false, 2}, {true, true, 2}, {true, false, 3}})
        EXPECT_EQ(world.windows.countTitles("Log", c.partial, c.caseSensitive), c.count);
    EXPECT_FALSE(world.windows.WindowTitleExists("CCDSoft", true, false));
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

TEST(ImagingWindows, TellsTheFilter) {
    struct Case {
        const char* why;
        bool cameraAnswers;
        const char* stored;
        int filter, tab;
    };
    for (const Case& c : {
             Case{"from the camera", true, "5", 2, 1},
             Case{"as stored by the dialog", false, "5", 5, 4},
             Case{"stored out of range", false, "99999", 32767, 4},
             Case{"unknown", false, "", 0, 4},
         }) {
        ImagingWorld world;
        world.installMaxIm();
        world.openMaxIm();
        world.desktop.find(world.tabs)->selectedTab = 1;
        world.settings.SaveSetting("CurrentVersion", "D3130_EXP_FILTER", c.stored);
        world.programs.maxImCamera = world.host.create("MaxIm.CCDCamera");
        if (!c.cameraAnswers) world.fail("MaxIm.CCDCamera", "Filter", 438);
        EXPECT_EQ(world.windows.GetCameraFilter(), c.filter) << c.why;
        EXPECT_EQ(world.desktop.find(world.tabs)->selectedTab, c.tab) << c.why;
        // There and back: the dialog stores only what changes.
        EXPECT_EQ(world.desktop.turnedTo, c.cameraAnswers ? std::vector<int>{} : (std::vector{0, 4}))
            << c.why;
    }
}

}  // namespace
}  // namespace vantrel::devices
