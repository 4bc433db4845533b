#include "app/main_menu.h"

#include <filesystem>

#include "app/on_top.h"
#include "app/settings_store.h"
#include "app/version.h"
#include "engine/indicators.h"
#include "platform/text.h"

namespace vantrel::app {

using platform::Words;

MainMenu::MainMenu(Parts& parts) : parts_(parts) {
    SetupPanel& panel = parts_.main.setup;
    panel.mnuSolvePicture.onClick = [this] { parts_.solvePictureForm.show(); };
    panel.mnuFileExit.onClick = [this] { parts_.main.closeByOperator(); };
    panel.mnuSetOnTop.onClick = [this] { mnuSetOnTop_Click(); };
    panel.mnuNight.onClick = [this] { mnuNight_Click(); };
    panel.mnuDimmer.onClick = [this] { mnuDimmer_Click(); };
    panel.mnuSetOptions.onClick = [this] { parts_.optionsForm.show(); };
    parts_.main.imaging.cmdDevices.onClick = [this] { parts_.devicesForm.show(); };
    panel.mnuFormHelp.onClick = [this] { mnuFormHelp_Click(); };
    panel.mnuWelcome.onClick = [this] { parts_.welcomeForm.show(); };
    parts_.welcomeForm.cmdTrySimulator.onClick = [this] { cmdTrySimulator_Click(); };
    parts_.welcomeForm.cmdMyDevices.onClick = [this] { cmdMyDevices_Click(); };
    parts_.welcomeForm.cmdJustSolve.onClick = [this] { cmdJustSolve_Click(); };
    panel.mnuAbout.onClick = [this] { parts_.aboutForm.show(); };
    panel.cmdLog.onClick = [this] { parts_.logForm.show(); };
    panel.cmdTelescope.onClick = [this] { parts_.telescopeWindow.cmdTelescope_Click(); };
    StatusPanel& status = parts_.main.status;
    const auto turnTo = [this](frmMain::Page page) {
        return [this, page] { parts_.main.pageWanted.emit(page); };
    };
    status.cmdMountStatus.onClick = panel.cmdTelescope.onClick;
    status.cmdCameraStatus.onClick = turnTo(frmMain::Page::kSetUp);
    status.cmdSolverStatus.onClick = turnTo(frmMain::Page::kPlateSolve);
    status.cmdSiteStatus.onClick = turnTo(frmMain::Page::kSetUp);
    status.cmdLastMessage.onClick = [this] {
        parts_.statusStrip.takeBack();
        parts_.logForm.show();
    };
    parts_.aboutForm.cmdSysInfo.onClick = [this] { cmdSysInfo_Click(); };
}

void MainMenu::mnuFormHelp_Click() {
    const std::string file = platform::joinFolder(parts_.machine.desktop.programFolder(), "Vantrel Help.chm");
    const std::filesystem::path manual = parts_.machine.desktop.shownFor(file);
    std::error_code ignored;
    const bool exists = std::filesystem::exists(manual, ignored);
    if (exists && parts_.machine.desktop.open(manual.string())) return;
    // On a desktop without a program for it the operator is told where the manual is.
    const std::string text =
        exists ? "No program here opens the manual:\r\n" + manual.string() : "Could not open Help file!";
    parts_.popups.ShowPopupMessage(text, 5);
    parts_.log.AddToLog(text);
}

void MainMenu::mnuSetOnTop_Click() {
    toggleOnTop(parts_.main, parts_.settings);
    applyOnTop(parts_.main, parts_.main.setup.mnuSetOnTop, parts_.settings);
}

void MainMenu::mnuNight_Click() {
    const bool night = !engine::nightVision(parts_.settings);
    parts_.settings.SaveSetting(kProgramSection, "GreenColors", night ? "1" : "0");
    parts_.optionsForm.showNight(night);
}

/// From bright to dim, and round again.
void MainMenu::mnuDimmer_Click() {
    constexpr double kBrightest = 3;
    const double step =
        platform::leadingNumber(parts_.settings.GetSetting(kProgramSection, "NightBrightness", "3"));
    const double next = step > 1 ? step - 1 : kBrightest;
    parts_.settings.SaveSetting(kProgramSection, "NightBrightness", platform::toText(next));
    parts_.optionsForm.showNightBrightness(next);
}

void MainMenu::cmdTrySimulator_Click() {
    parts_.welcomeForm.unload();
    parts_.telescopeWindow.useTelescope("AxisSimulator.Telescope");
    if (parts_.state.AppUnloading) return;
    parts_.logForm.raise();  // on a small screen the telescope's window has opened over it
    parts_.main.activate();
}

/// The windows stay open: where a server is elsewhere, the operator tells it there and selects once more.
void MainMenu::cmdMyDevices_Click() {
    parts_.welcomeForm.unload();
    parts_.devicesForm.show();
    parts_.telescopeForm.show();
    parts_.telescopeForm.cmdPickTelescope.press();
    if (!parts_.state.AppUnloading && parts_.machine.chooseCamera) parts_.machine.chooseCamera();
}

void MainMenu::cmdJustSolve_Click() {
    parts_.welcomeForm.unload();
    parts_.solvePictureForm.show();
}

void MainMenu::cmdSysInfo_Click() {
    platform::Desktop& desktop = parts_.machine.desktop;
    std::string viewer = desktop.registryValue("SOFTWARE\\Microsoft\\Shared Tools\\MSINFO", "PATH");
    if (viewer.empty()) {
        const std::string folder =
            desktop.registryValue("SOFTWARE\\Microsoft\\Shared Tools Location", "MSINFO");
        if (!folder.empty()) viewer = folder + "\\MSINFO32.EXE";
    }
    if (!viewer.empty() && desktop.open(viewer)) return;
    parts_.machine.dialogs.messageBox(kProgramTitle,
                                      Words::tr("This computer has no system-information viewer."),
                                      platform::Dialogs::Icon::kInformation, platform::Dialogs::Buttons::kOk);
}

}  // namespace vantrel::app
