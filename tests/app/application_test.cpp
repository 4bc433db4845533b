#include "app/application.h"

#include <filesystem>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/handler_barrier.h"
#include "app/os_name.h"
#include "app/popup_messages.h"
#include "app/startup.h"
#include "app/version.h"
#include "observatory/simulator_setup.h"
#include "platform/errors.h"
#include "platform/queued_event_loop.h"
#include "platform/text.h"
#include "program_world.h"
#include "support/journal.h"

namespace vantrel::app {
namespace {

using platform::Button;
using platform::MenuItem;
using platform::SystemVersion;
using platform::TextBox;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

struct ApplicationTest : testing::Test, test::ProgramWorld {
    void clickLater(const char* button) {
        loop.post([this, button] { control<Button>(button).click(); });
    }
};

TEST_F(ApplicationTest, StartsOnAFreshMachine) {
    start();
    EXPECT_THAT(
        logged(),
        ElementsAre("OS: Starry Linux 3", "Log folder: C:\\Users\\me\\My Documents\\Vantrel\\Message Logs",
                    "Vantrel Version " + versionText(), "Neither MaxIm DL/CCD nor CCDSoft can be found",
                    "You must install your Imaging Software", "Telescope Telescope Simulator is connected",
                    HasSubstr("Telescope Site: Latitude = ")));
    EXPECT_TRUE(dialogs.boxes.empty());
    EXPECT_FALSE(program->busy());
    EXPECT_FALSE(program->ended());
}

TEST_F(ApplicationTest, OnlyOneInstanceRuns) {
    struct Guard : platform::InstanceGuard {
        bool alone = true;
        int activated = 0;
        bool acquire() override { return alone; }
        void activateOther() override { ++activated; }
        bool activationRequested() override { return false; }
    } guard;
    EXPECT_TRUE(mayStart(guard, dialogs));
    EXPECT_TRUE(dialogs.boxes.empty());
    guard.alone = false;
    EXPECT_FALSE(mayStart(guard, dialogs));
    ASSERT_EQ(dialogs.boxes.size(), 1u);
    EXPECT_EQ(dialogs.boxes[0].text, "Vantrel is already running");
    EXPECT_EQ(guard.activated, 1);
}

TEST_F(ApplicationTest, ClosingDuringAProcedureWaitsForItToReturn) {
    settings.write("PolarAlign", "PlateSolveMethod", "1");
    settings.write("PolarAlign", "DeltaRA", "0");
    start();
    clickLater("frmMain.cmdRun");
    const auto later = loop.after(platform::Milliseconds{5000}, [&] {
        EXPECT_TRUE(program->busy());
        form("frmMain").closeByOperator();
        loop.yield();
        EXPECT_FALSE(program->ended());
    });
    pass(10);
    EXPECT_TRUE(program->ended());
    EXPECT_FALSE(hasLogged("Align Aborted")) << "procedures return silently";
}

TEST_F(ApplicationTest, ClosingDuringAnExposureAbortsIt) {
    useImagingProgram("CCDSoft");
    start();
    control<TextBox>("frmMain.txtContinuousExposeInterval").type("300");
    clickLater("frmMain.cmdExpose");
    const auto later = loop.after(platform::Milliseconds{5000}, [&] {
        EXPECT_TRUE(program->busy());
        host.takeJournal("*");
        form("frmMain").closeByOperator();
    });
    pass(20);
    EXPECT_TRUE(program->ended());
    EXPECT_THAT(test::actionsOn(host, "CCDSoft.Camera"), Contains("call abort"));
}

TEST_F(ApplicationTest, SettingsThatFailEndTheProgram) {
    start();
    settings.full = true;
    control<TextBox>("frmMain.txtDeltaRA").type("7");
    control<TextBox>("frmMain.txtDeltaRA").type("8");
    pass(1);
    ASSERT_EQ(dialogs.boxes.size(), 1u);
    EXPECT_EQ(dialogs.boxes[0].text, "Failed to write config value DeltaRA to registry section PolarAlign.");
    EXPECT_TRUE(program->ended());
    EXPECT_TRUE(program->failed());
}

TEST_F(ApplicationTest, MenusAndButtonsShowTheOtherWindows) {
    start();
    const struct {
        const char* control;
        const char* window;
        const char* title;
    } rows[] = {
        {"frmMain.mnuSetOptions", "frmOptions", "Options"},
        {"frmMain.mnuAbout", "frmAbout", "About Vantrel"},
        {"frmMain.cmdLog", "frmLog", "Log"},
        {"frmMain.cmdTelescope", "frmTelescope", "Telescope"},
        {"frmMain.cmdPolarPlot", "frmPolarPlot", "Polar Plot"},
        {"frmMain.cmdGetImageScale(0)", "frmPixelScale", "Pixel Scale Calculator"},
    };
    for (const auto& row : rows) {
        form(row.window).unload();
        if (auto* item = dynamic_cast<MenuItem*>(screen.findControl(row.control))) item->click();
        if (auto* button = dynamic_cast<Button*>(screen.findControl(row.control))) button->press();
        EXPECT_TRUE(form(row.window).shown()) << row.control;
        EXPECT_EQ(form(row.window).title(), row.title);
    }
    control<MenuItem>("frmMain.mnuFileExit").click();
    pass(1);
    EXPECT_TRUE(program->ended());
}

TEST_F(ApplicationTest, TellsWhereTheFoldersAreOnThisMachine) {
    start();
    const struct {
        const char *box, *label;
    } rows[] = {{"frmMain.txtImagePath", "frmMain.lblImageFolder"},
                {"frmMain.txtLogPath", "frmMain.lblLogFolder"}};
    for (const auto& row : rows) {
        auto& box = control<TextBox>(row.box);
        const auto& label = control<platform::Label>(row.label);
        EXPECT_EQ(label.caption(), folders.real(box.text()).string());
        EXPECT_TRUE(std::filesystem::is_directory(label.caption()));
        box.type("D:\\Night");
        EXPECT_EQ(label.caption(), (home / "d" / "Night").string());
        EXPECT_EQ(label.toolTip(), label.caption());
        for (const char* nothingNew : {"/srv/night", ""}) {
            box.type(nothingNew);
            EXPECT_EQ(label.caption(), "") << nothingNew;
        }
    }
}

TEST_F(ApplicationTest, AMissingHelpFileIsTold) {
    start();
    auto& help = control<MenuItem>("frmMain.mnuFormHelp");
    const auto expectTold = [&](const std::string& text) {
        EXPECT_EQ(program->popups().history().back().text, text);
        EXPECT_EQ(program->popups().history().back().seconds, 5);
        EXPECT_EQ(logged().back(), text);
    };
    help.click();
    expectTold("Could not open Help file!");

    const std::string file = desktop.programFolder() + "\\Vantrel Help.chm";
    std::filesystem::create_directories(folders.real(desktop.programFolder()));
    std::ofstream(folders.real(file)) << "help";
    help.click();
    EXPECT_THAT(desktop.opened, ElementsAre(folders.real(file).string()));

    desktop.canOpen = false;
    help.click();
    expectTold("No program here opens the manual:\r\n" + folders.real(file).string());
}

TEST_F(ApplicationTest, TheSystemsDescriptionIsOpenedWhereThereIsAViewer) {
    start();
    form("frmAbout").show();
    auto& info = control<Button>("frmAbout.cmdSysInfo");
    info.click();
    ASSERT_EQ(dialogs.boxes.size(), 1u);
    EXPECT_EQ(dialogs.boxes[0].text, "This computer has no system-information viewer.");
    desktop.registry = {{"MSINFO", "C:\\Info"}};
    info.click();
    desktop.registry["PATH"] = "C:\\viewer.exe";
    info.click();
    EXPECT_THAT(desktop.opened, ElementsAre("C:\\Info\\MSINFO32.EXE", "C:\\viewer.exe"));
    desktop.canOpen = false;
    info.click();
    EXPECT_EQ(dialogs.boxes.size(), 2u);
}

TEST_F(ApplicationTest, WindowsStayOnTopAsTheOperatorWishes) {
    start();
    for (const auto& [window, menu] : {std::pair{"frmMain", ".mnuSetOnTop"}, {"frmLog", ".mnuOnTop"}}) {
        auto& item = control<MenuItem>(std::string(window) + menu);
        for (const bool onTop : {true, false, true}) {
            item.click();
            EXPECT_EQ(form(window).onTop(), onTop) << window;
            EXPECT_EQ(item.checked(), onTop) << window;
        }
    }
}

TEST_F(ApplicationTest, FoldersAreChosenInADialog) {
    start();
    dialogs.answers = {"D:\\Logs", "D:\\Images", "", "F:\\GSC"};
    for (const char* button : {"cmdSetLogPath", "Command1", "Command1", "cmdSetDir"})
        control<Button>(std::string("frmMain.") + button).press();
    EXPECT_THAT(dialogs.titles,
                ElementsAre("Set Log Path", "Set Image Path", "Set Image Path", "Set PinPoint path"));
    EXPECT_EQ(settings.read("PolarAlign", "LogPath"), "D:\\Logs");
    EXPECT_EQ(settings.read("PolarAlign", "ImagePath"), "D:\\Images");
    EXPECT_EQ(text("frmMain.txtImagePath"), "D:\\Images") << "cancelled: as it was";
    EXPECT_TRUE(std::filesystem::exists(folders.real("D:\\Logs")));
}

TEST_F(ApplicationTest, TheLogWindowRemembersItsSizeAndKeepsItsText) {
    start();
    const std::string before = text("frmLog.txtLog");
    form("frmLog").placeByOperator({10, 20, 500, 300});
    EXPECT_EQ(settings.read("Main", "LogWidth"), "500");
    control<MenuItem>("frmLog.mnuClear").click();
    const std::string log = text("frmLog.txtLog");
    EXPECT_THAT(log.substr(log.rfind('\n') - 1), testing::MatchesRegex("\r\n..:..:..   "));
    EXPECT_TRUE(text("frmLog.txtLog").starts_with(before)) << "Clear only adds an empty entry";
    control<MenuItem>("frmLog.mnuClose").click();
    EXPECT_FALSE(form("frmLog").loaded());

    settings.write("Main", "LogHeight", "280");
    program->log().AddToLog("later");
    EXPECT_EQ(form("frmLog").place().height, 280) << "as stored";
    EXPECT_TRUE(text("frmLog.txtLog").starts_with(before));
}

// ---- what handlers throw

struct HandlerBarrierTest : testing::Test {
    platform::Screen screen{{0, 0, 100, 100}};
    platform::Form form{screen, "frmTest", "", {}};
    platform::Button button{form, "cmdTest", ""};
    platform::TextBox box{form, "txtTest"};
    BusyCount busy;
    std::vector<std::string> reports;
    HandlerBarrier barrier{busy, [this](const std::string& handler) {
                               reports.push_back(platform::errorReport(platform::currentError(), handler));
                           }};
};

TEST_F(HandlerBarrierTest, ReportsWhatAHandlerThrows) {
    button.onClick = [] { throw platform::runTimeError(11); };
    box.onChange = [] { throw std::logic_error("oops"); };
    form.onUnload = [] { throw 7; };
    barrier.guard(form);
    form.show();
    button.click();
    box.type("x");
    form.unload();
    EXPECT_EQ(reports,
              (std::vector<std::string>{"Error 11: Division by zero\r\nfrmTest Sub cmdTest_Click",
                                        "Error 51: oops\r\nfrmTest Sub txtTest_Change", reports.back()}));
    EXPECT_NE(reports.back().find("frmTest Sub Form_Unload"), std::string::npos);
    EXPECT_FALSE(busy.busy());
}

TEST_F(HandlerBarrierTest, KnowsWhenTheLastHandlerHasReturned) {
    std::vector<std::string> story;
    busy.onIdle = [&] { story.emplace_back("idle"); };
    button.onClick = [&] {
        box.setText("inner");
        story.emplace_back(busy.busy() ? "busy" : "not busy");
    };
    box.onChange = [&] { story.emplace_back("change"); };
    barrier.guard(form);
    form.show();
    button.click();
    EXPECT_EQ(story, (std::vector<std::string>{"change", "busy", "idle"}));
}

TEST_F(HandlerBarrierTest, PutsClicksOffWhileAnOutsideMemberWaits) {
    platform::VirtualTime time({});
    platform::QueuedEventLoop loop(time);
    platform::OutsideCalls calls;
    bool ending = false;
    std::vector<std::string> story;
    platform::Button stop{form, "cmdStop", ""};
    button.onClick = [&] { story.emplace_back("click"); };
    stop.onClick = [&] { story.emplace_back("stop"); };
    barrier.putOffWhile(calls, loop, {&stop}, [&] { return ending; });
    barrier.guard(form);
    form.show();
    const auto clickDuringAMember = [&] {
        const platform::OutsideCall outer(calls), inner(calls);
        button.click();
        button.click();
        stop.click();
        loop.yield();
        story.emplace_back("answer");
    };
    clickDuringAMember();
    loop.yield();
    button.click();
    EXPECT_EQ(story, (std::vector<std::string>{"stop", "answer", "click", "click"}));
    story.clear();
    clickDuringAMember();
    ending = true;
    loop.yield();
    EXPECT_EQ(story, (std::vector<std::string>{"stop", "answer"}));
}

// ---- the system

SystemVersion home(int minor, const char* pack = "") {
    return {.platformId = 1, .major = 4, .minor = minor, .servicePackText = pack};
}
SystemVersion professional(int major, int minor, std::uint32_t product, int suite = 0) {
    return {.platformId = 2, .major = major, .minor = minor, .suiteMask = suite, .productType = product};
}
SystemVersion withPack(SystemVersion version, int major, int minor = 0) {
    version.servicePackMajor = major;
    version.servicePackMinor = minor;
    return version;
}

TEST(GetOSName, NamesEverySystemOfTheTable) {
    const std::pair<SystemVersion, const char*> rows[] = {
        {home(0), "Windows 95"},
        {home(0, " C "), "Windows 95 OSR2"},
        {home(10), "Windows 98"},
        {home(10, " A "), "Windows 98 SE"},
        {home(90), "Windows ME"},
        {{.platformId = 1, .major = 3}, ""},
        {professional(5, 0, 1, 2), "Windows 2000 Advanced"},
        {professional(5, 0, 1), "Windows 2000"},
        {withPack(professional(5, 0, 3), 4), ""},
        {withPack(professional(5, 1, 1), 2, 1), "Windows XP Professional Service Pack 2.1"},
        {withPack(professional(5, 1, 1), 0, 1), "Windows XP Professional"},
        {professional(5, 1, 1, 512), "Windows XP Home"},
        {professional(5, 2, 3), "Windows Server 2003 Standard"},
        {professional(5, 2, 3, 1024), "Windows Server 2003 Web Edition"},
        {professional(5, 2, 1), ""},
        {withPack(professional(6, 0, 1), 1), "Windows Vista Ultimate Edition Service Pack 1"},
        {professional(6, 0, 3), "Windows Server 2008 Home Premium Edition"},
        {professional(6, 0, 0xABCDABCD), "Windows Vista Not activated product"},
        {professional(6, 0, 11), "Windows Vista "},
        {professional(6, 1, 1), ""},
        {{.platformId = 3, .major = 5}, ""},
    };
    for (const auto& [version, name] : rows)
        EXPECT_EQ(GetOSName(version), name)
            << version.platformId << ": " << version.major << "." << version.minor;
    EXPECT_EQ(GetOSName(std::nullopt), "Error");
}

// ---- the measured axis, from the set one to the numbers in the window

struct MeasuredAxisTest : testing::Test, test::ProgramWorld {
    MeasuredAxisTest() {
        observatory::storeSimulatorSetup(settings);
        start();
    }

    platform::ObjectRef simulator() { return host.newest("AxisSimulator.Telescope"); }

    /// Points at the meridian side of a field with this declination (degrees).
    void pointTo(double declination) {
        const double lst = simulator()->get("SiderealTime").toDouble();
        simulator()->call("SlewToCoordinatesAsync", {lst > 1 ? lst - 1 : lst + 23, declination});
        pass(90);
    }

    void measure() {
        control<platform::TextBox>("frmMain.txtDeltaRA").type("20");
        loop.post([this] { control<platform::Button>("frmMain.cmdRun").click(); });
        const auto later = loop.after(std::chrono::minutes{3},
                                      [this] { control<platform::Button>("frmMain.cmdSkip").click(); });
        pass(200);
        ASSERT_EQ(logged().back(), "Alignment Run Complete");
    }

    double shown(const std::string& box) { return platform::leadingNumber(text("frmPolarPlot." + box)); }
};

TEST_F(MeasuredAxisTest, SignsHoldInBothHemispheresAndForMirroredCameras) {
    // The window speaks of the axis's northern end. In the south the observer looks at the other one, so both
    // parts have the opposite sign there.
    const struct {
        double latitude, azimuth, elevation;  // as set: east and above positive, arc-minutes
        bool mirrored;
        double shownAzimuth, shownElevation;
        const char* why;
    } cases[] = {
        {45, 0, 30, false, 0, 30, "north, above the pole"},
        {45, 0, -30, true, 0, -30, "north, below the pole, mirrored"},
        {45, 30, 0, true, 30, 0, "north, east of the pole, mirrored"},
        {45, -30, 0, false, -30, 0, "north, west of the pole"},
        {-35, 0, 30, true, 0, -30, "south, above the pole, mirrored"},
        {-35, 0, -30, false, 0, 30, "south, below the pole"},
        {-35, 30, 0, false, -30, 0, "south, east of the pole"},
        {-35, -30, 0, true, 30, 0, "south, west of the pole, mirrored"},
    };
    for (const auto& c : cases) {
        simulator()->put("SiteLatitude", c.latitude);
        simulator()->put("PolarAzimuthError", c.azimuth);
        simulator()->put("PolarElevationError", c.elevation);
        simulator()->put("CameraMirrored", c.mirrored);
        pointTo(c.latitude > 0 ? 40 : -40);
        measure();
        EXPECT_NEAR(shown("txtAzimuthError"), c.shownAzimuth, 0.5) << c.why;
        EXPECT_NEAR(shown("txtAltitudeError"), c.shownElevation, 0.5) << c.why;
        EXPECT_EQ(control<platform::Label>("frmPolarPlot.lblAzimuth_Unit").caption(), "arc-min") << c.why;
    }
}

}  // namespace
}  // namespace vantrel::app
