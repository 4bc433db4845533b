#include "app/application.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/popup_messages.h"
#include "app/startup.h"
#include "app/version.h"
#include "devices/imaging_world.h"
#include "observatory/simulator_setup.h"
#include "platform/text.h"
#include "program_world.h"
#include "support/journal.h"

namespace vantrel::app {
namespace {

using platform::Button;
using platform::CheckBox;
using platform::MenuItem;
using platform::TextBox;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

struct ApplicationTest : testing::Test, test::ProgramWorld {
    /// What was created and put, in order, with the class before it.
    std::vector<std::string> journal() {
        std::vector<std::string> texts;
        for (const auto& entry : host.takeJournal("*"))
            if (entry.kind == "create" || entry.kind == "put")
                texts.push_back(entry.object + " " + test::asText(entry));
        return texts;
    }
    std::string logFile() {
        std::string all;
        const auto folder = folders.real("C:\\Users\\me\\My Documents\\Vantrel\\Message Logs");
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            all += test::contentsOf(entry.path());
        return all;
    }
    void close() {
        form("frmMain").closeByOperator();
        pass(1);
    }
};

TEST_F(ApplicationTest, StartsOnAFreshMachine) {
    start();
    EXPECT_THAT(
        logged(),
        ElementsAre("OS: ", "Log folder: C:\\Users\\me\\My Documents\\Vantrel\\Message Logs",
                    "Vantrel Version " + versionText(), "Neither MaxIm DL/CCD nor CCDSoft can be found",
                    "You must install your Imaging Software", "Telescope Telescope Simulator is connected",
                    HasSubstr("Telescope Site: Latitude = ")));
    EXPECT_THAT(journal(),
                ElementsAre("ScopeSim.Telescope create", "DriverHelper.Util create",
                            "ScopeSim.Telescope create", "ScopeSim.Telescope put Connected True",
                            "DriverHelper.Profile create", "DriverHelper.Profile put DeviceType Utility"));
    EXPECT_THAT(text("frmMain.txtInstructions"), HasSubstr("Polar Align Measurement Start"));
    for (const char* window : {"frmMain", "frmLog", "frmTelescope"}) EXPECT_TRUE(form(window).shown());
    EXPECT_FALSE(program->busy());
    EXPECT_FALSE(program->ended());
    EXPECT_TRUE(dialogs.boxes.empty());

    EXPECT_THAT(logFile(), HasSubstr("   Vantrel Version "));
    EXPECT_THAT(logFile(), testing::Not(HasSubstr("OS: "))) << "the first lines come before the file";
    EXPECT_EQ(text("frmMain.txtLogPath"), "C:\\Users\\me\\My Documents\\Vantrel\\Message Logs");
    EXPECT_EQ(text("frmMain.txtImagePath"), "C:\\Users\\me\\My Documents\\Vantrel");
    EXPECT_EQ(settings.read("Main", "MyTelescopeID"), "ScopeSim.Telescope");
    EXPECT_TRUE(settings.read("Main", "MainHeight"));
}

TEST_F(ApplicationTest, StartsWhereItWasLeft) {
    settings.write("Main", "MainTop", "111");
    settings.write("Main", "MainLeft", "222");
    settings.write("PolarAlign", "frmMainOnTop", "True");
    settings.write("PolarAlign", "DeltaRA", "25");
    settings.write("Solve", "MinBrt", "321");
    settings.write("Solve", "ppCatalog", "4");
    desktop.version = std::nullopt;
    start();
    EXPECT_EQ(form("frmMain").place().top, 111);
    EXPECT_EQ(form("frmMain").place().left, 222);
    EXPECT_TRUE(form("frmMain").onTop());
    EXPECT_TRUE(control<MenuItem>("frmMain.mnuSetOnTop").checked());
    EXPECT_EQ(text("frmMain.txtDeltaRA"), "25");
    EXPECT_EQ(text("frmMain.txtSolveMinBrt"), "321");
    EXPECT_EQ(control<platform::ComboBox>("frmMain.cmbppCat").text(), "Tycho-2");
    EXPECT_EQ(logged().front(), "OS: Error");
}

TEST_F(ApplicationTest, EndsAtOnceWithoutThePlatform) {
    classes.uninstall("ScopeSim.Telescope");
    start();
    const std::string text =
        "The ASCOM Platform is not\r\ninstalled on this computer!!\r\n\r\nPlease download from site:\r\n";
    ASSERT_EQ(dialogs.boxes.size(), 1u);
    EXPECT_TRUE(dialogs.boxes[0].text.starts_with(text));
    EXPECT_TRUE(this->text("frmMain.txtInstructions").starts_with(text));
    EXPECT_TRUE(program->ended());
    EXPECT_TRUE(program->failed());
    EXPECT_TRUE(settings.isEmpty()) << "what was never read must not be stored";
    EXPECT_TRUE(screen.shownForms().empty());
}

TEST_F(ApplicationTest, AChosenTelescopeProvesThePlatform) {
    classes.uninstall("ScopeSim.Telescope");
    settings.write("Main", "MyTelescopeID", "AxisSimulator.Telescope");
    start();
    EXPECT_TRUE(hasLogged("Telescope Polar Axis Simulator is connected"));
    EXPECT_FALSE(program->ended());
}

TEST_F(ApplicationTest, AStepThatFailsIsLoggedAndTheOthersGoOn) {
    classes.uninstall("DriverHelper.Profile");
    start();
    EXPECT_THAT(logged(),
                Contains(testing::AllOf(HasSubstr("Error 429: "), HasSubstr("\r\nfrmMain Sub Form_Load"))));
    EXPECT_THAT(logged(), Contains(HasSubstr("Telescope Site: ")));
    EXPECT_TRUE(form("frmMain").shown());
}

TEST_F(ApplicationTest, AMissingSiteIsAnAlarm) {
    settings.write("Main", "UseTelescopeSiteLocation", "False");
    settings.write("Main", "SiteLatitude", "48.5");
    start();
    EXPECT_EQ(text("frmMain.txtInstructions"), "Error in observer site!\r\nPlease check Setup Tab");
    EXPECT_THAT(logged(), IsSupersetOf({"Error setting site position, check observer site entry for errors!",
                                        "Error in observer site!\r\nPlease check Setup Tab"}));
    EXPECT_TRUE(form("frmMain").shown());
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

TEST_F(ApplicationTest, MeasuresTheSimulatorsAxisFromTheRunButton) {
    observatory::storeSimulatorSetup(settings);
    start();
    host.newest("AxisSimulator.Telescope")->put("PolarAzimuthError", 0.0);
    host.newest("AxisSimulator.Telescope")->put("PolarElevationError", 30.0);
    control<TextBox>("frmMain.txtDeltaRA").type("20");
    loop.post([this] { control<Button>("frmMain.cmdRun").click(); });
    const auto later = loop.after(std::chrono::minutes{10}, [this] {
        EXPECT_TRUE(program->busy()) << "the run offers the correction";
        control<Button>("frmMain.cmdSkip").click();
    });
    pass(700);
    EXPECT_EQ(logged().back(), "Alignment Run Complete");
    const double amplitude = platform::leadingNumber(text("frmPolarPlot.txtMagnitude"));
    EXPECT_NEAR(amplitude, 30, 0.6) << "arc-minutes, as set";
    EXPECT_FALSE(program->busy());
    EXPECT_TRUE(control<Button>("frmMain.cmdRun").enabled());
}

TEST_F(ApplicationTest, ClosingStoresEverythingAndLetsGoOfTheTelescope) {
    start();
    control<TextBox>("frmMain.txtPostExpDelay").type("4");
    form("frmMain").placeByOperator({30, 40, 620, 560});
    int endings = 0;
    const auto ending = program->endedChanged.subscribe([&] { ++endings; });
    journal();

    form("frmMain").closeByOperator();
    EXPECT_FALSE(program->ended()) << "the rest comes from a handler of its own";
    form("frmMain").closeByOperator();
    pass(1);
    EXPECT_TRUE(program->ended());
    EXPECT_FALSE(program->failed());
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(settings.read("PolarAlign", "PostExpDelay"), "4");
    EXPECT_EQ(settings.read("Solve", "SpiralSearch"), "True");
    EXPECT_EQ(settings.read("Solve", "ppCatalog"), "3");
    EXPECT_EQ(settings.read("Main", "MainTop"), "40");
    EXPECT_EQ(settings.read("Main", "MainLeft"), "30");
    EXPECT_THAT(journal(), ElementsAre("ScopeSim.Telescope put Connected False"));
    EXPECT_EQ(logged().back(), "Simulated equatorial mount is disconnected");
    for (const platform::Form* window : screen.forms()) EXPECT_FALSE(window->loaded()) << window->name();
    for (const char* progId : {"ScopeSim.Telescope", "DriverHelper.Util", "DriverHelper.Profile"})
        EXPECT_EQ(host.newest(progId), nullptr) << progId << " is still held";
}

TEST_F(ApplicationTest, ClosingDuringAProcedureWaitsForItToReturn) {
    settings.write("PolarAlign", "PlateSolveMethod", "1");
    settings.write("PolarAlign", "DeltaRA", "0");
    start();
    bool busyBefore = false, endedAtOnce = true;
    loop.post([this] { control<Button>("frmMain.cmdRun").click(); });
    const auto later = loop.after(platform::Milliseconds{5000}, [&] {
        busyBefore = program->busy();
        form("frmMain").closeByOperator();
        loop.yield();
        endedAtOnce = program->ended();
    });
    pass(10);
    EXPECT_TRUE(busyBefore);
    EXPECT_FALSE(endedAtOnce);
    EXPECT_TRUE(program->ended());
    EXPECT_FALSE(hasLogged("Align Aborted")) << "procedures return silently";
    EXPECT_EQ(settings.read("PolarAlign", "DelayAfterSlew"), "5");
}

TEST_F(ApplicationTest, ClosingDuringAnExposureEndsItAndLetsGoOfTheImagingProgram) {
    test::Camera camera;
    const std::string path = "C:\\Imaging\\program.exe";
    classes.install("MaxIm.CCDCamera",
                    {[&] { return std::make_shared<test::FakeMaxImCamera>(loop, camera); }, path, "", ""});
    classes.install(
        "MaxIm.Application",
        {[&] { return std::make_shared<test::FakeMaxImApplication>(loop, camera, 4.56); }, path, "", ""});
    classes.install("CCDSoft.Camera",
                    {[&] { return std::make_shared<test::FakeCCDSoftCamera>(loop, camera); }, path, "", ""});
    windows.installProgram(path, {[] {}, "5.00.73"});
    windows.open({"MaxIm DL Version 4", "Frame"});
    windows.open({"CCDSoft", "Frame"});
    const struct {
        const char* program;
        const char* progId;
        const char* use;  // at the end
    } rows[] = {{"CCDSoft", "CCDSoft.Camera", "call abort"},
                {"MaxIm", "MaxIm.CCDCamera", "put DisableAutoShutdown True"}};
    for (const auto& row : rows) {
        settings.write("PolarAlign", "ImagingSoftware", row.program);
        start();
        EXPECT_THAT(logged(), Contains(HasSubstr("is the Imaging Software"))) << row.program;
        control<TextBox>("frmMain.txtContinuousExposeInterval").type("300");
        loop.post([this] { control<Button>("frmMain.cmdExpose").click(); });
        const auto later = loop.after(platform::Milliseconds{5000}, [&] {
            EXPECT_TRUE(program->busy()) << row.program;
            host.takeJournal("*");
            form("frmMain").closeByOperator();
        });
        pass(20);
        EXPECT_TRUE(program->ended()) << row.program;
        EXPECT_THAT(test::actionsOn(host, row.progId), Contains(row.use)) << row.program;
        EXPECT_EQ(host.newest(row.progId), nullptr) << row.program;
        EXPECT_EQ(settings.read("PolarAlign", "ImagingSoftware"), row.program);
        EXPECT_EQ(settings.read("PolarAlign", "ContinuousExposeInterval"), "300");
    }
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

TEST_F(ApplicationTest, SettingsThatFailDuringTheStartEndItAtOnce) {
    settings.full = true;
    start();
    EXPECT_EQ(dialogs.boxes.size(), 1u);
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

TEST_F(ApplicationTest, AMissingHelpFileIsTold) {
    start();
    control<MenuItem>("frmMain.mnuFormHelp").click();
    EXPECT_EQ(program->popups().history().back().text, "Could not open Help file!");
    EXPECT_EQ(program->popups().history().back().seconds, 5);
    EXPECT_EQ(logged().back(), "Could not open Help file!");

    const std::string file = desktop.programFolder() + "\\Vantrel Help.chm";
    std::filesystem::create_directories(folders.real(desktop.programFolder()));
    std::ofstream(folders.real(file)) << "help";
    control<MenuItem>("frmMain.mnuFormHelp").click();
    EXPECT_THAT(desktop.opened, ElementsAre(file));

    desktop.canOpen = false;
    control<MenuItem>("frmMain.mnuFormHelp").click();
    EXPECT_EQ(logged().back(), "No program here opens the manual:\r\n" + folders.real(file).string());
    EXPECT_EQ(program->popups().history().back().text, logged().back());
}

TEST_F(ApplicationTest, WindowsStayOnTopAsTheOperatorWishes) {
    start();
    for (const char* window : {"frmMain", "frmLog"}) {
        auto& item =
            control<MenuItem>(std::string(window) + (window[3] == 'M' ? ".mnuSetOnTop" : ".mnuOnTop"));
        for (const bool onTop : {true, false, true}) {
            item.click();
            EXPECT_EQ(form(window).onTop(), onTop) << window;
            EXPECT_EQ(item.checked(), onTop) << window;
            EXPECT_EQ(settings.read("PolarAlign", std::string(window) + "OnTop"), onTop ? "True" : "False");
        }
    }
}

TEST_F(ApplicationTest, OptionsAreStoredWhenTheirDialogCloses) {
    start();
    control<MenuItem>("frmMain.mnuSetOptions").click();
    EXPECT_TRUE(control<CheckBox>("frmOptions.chkImagingSWVersionCheck").ticked());
    form("frmOptions").closeByOperator();
    EXPECT_EQ(settings.read("PolarAlign", "ImagingSWVersionCheck"), "1");
    EXPECT_EQ(settings.read("PolarAlign", "GreenColors"), "0");
    EXPECT_EQ(settings.read("PolarAlign", "EnableRestoreImagingSW"), "0");

    settings.write("PolarAlign", "EnableRestoreImagingSW", "1");
    control<MenuItem>("frmMain.mnuSetOptions").click();
    EXPECT_TRUE(control<CheckBox>("frmOptions.chkEnableRestoreImagingSW").ticked());
    control<CheckBox>("frmOptions.chkGreenColors").check(1);
    form("frmOptions").closeByOperator();
    EXPECT_EQ(settings.read("PolarAlign", "GreenColors"), "1");
}

TEST_F(ApplicationTest, FoldersAreChosenInADialog) {
    start();
    dialogs.answers = {"D:\\Logs", "D:\\Images", ""};
    control<Button>("frmMain.cmdSetLogPath").click();
    control<Button>("frmMain.Command1").click();
    control<Button>("frmMain.Command1").click();
    EXPECT_THAT(dialogs.titles, ElementsAre("Set Log Path", "Set Image Path", "Set Image Path"));
    EXPECT_EQ(settings.read("PolarAlign", "LogPath"), "D:\\Logs");
    EXPECT_EQ(settings.read("PolarAlign", "ImagePath"), "D:\\Images");
    EXPECT_EQ(text("frmMain.txtImagePath"), "D:\\Images") << "cancelled: as it was";
    EXPECT_TRUE(std::filesystem::exists(folders.real("D:\\Logs")));
}

TEST_F(ApplicationTest, TheLogWindowRemembersItsPlaceAndKeepsItsText) {
    start();
    const std::string before = text("frmLog.txtLog");
    form("frmLog").placeByOperator({10, 20, 500, 300});
    EXPECT_EQ(settings.read("Main", "LogWidth"), "500");
    control<MenuItem>("frmLog.mnuClear").click();
    EXPECT_THAT(text("frmLog.txtLog"), testing::MatchesRegex(".*\r\n..:..:..   "));
    EXPECT_TRUE(text("frmLog.txtLog").starts_with(before)) << "Clear only adds an empty entry";
    control<MenuItem>("frmLog.mnuClose").click();
    EXPECT_FALSE(form("frmLog").loaded());
    EXPECT_EQ(settings.read("Main", "LogTop"), "20");

    program->log().AddToLog("later");
    EXPECT_TRUE(form("frmLog").loaded());
    EXPECT_EQ(form("frmLog").place().height, 300);
    EXPECT_TRUE(text("frmLog.txtLog").starts_with(before));
}

}  // namespace
}  // namespace vantrel::app
