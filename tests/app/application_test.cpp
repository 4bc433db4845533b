#include "app/application.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/popup_messages.h"
#include "app/startup.h"
#include "app/version.h"
#include "program_world.h"
#include "support/journal.h"

namespace vantrel::app {
namespace {

using platform::Button;
using platform::MenuItem;
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

TEST_F(ApplicationTest, ClosingDuringTheStartLeavesTheRestOut) {
    settings.write("Main", "MyTelescopeID", "TheSky.Telescope");  // isn't there: the attempts take a while
    const auto later = loop.after(platform::Milliseconds{2000}, [&] { program->close(); });
    start();
    EXPECT_FALSE(form("frmMain").shown());
    pass(1);
    EXPECT_TRUE(program->ended());
    EXPECT_EQ(host.takeJournal("DriverHelper.Profile").size(), 0u);
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

}  // namespace
}  // namespace vantrel::app
