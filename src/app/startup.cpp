#include "app/startup.h"

#include <functional>

#include "app/folders.h"
#include "app/on_top.h"
#include "app/os_name.h"
#include "app/stored_position.h"
#include "app/version.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::app {

using platform::Dialogs;
using platform::formatNumber;
using platform::joinLines;

bool mayStart(platform::InstanceGuard& guard, platform::Dialogs& dialogs) {
    if (guard.acquire()) return true;
    dialogs.messageBox(kProgramTitle, "Vantrel is already running", Dialogs::Icon::kExclamation,
                       Dialogs::Buttons::kOk);
    guard.activateOther();
    return false;
}

bool StartUp::Form_Load() {
    try {
        return load();
    } catch (const SettingsFailure&) {
        return false;
    }
}

bool StartUp::load() {
    if (!ASCOMPlatformIsInstalled()) {
        tellThatPlatformIsMissing();
        return false;
    }
    const std::function<void()> steps[] = {
        [this] { chooseFolders(); },
        [this] { showLog(); },
        [this] { fillFields(); },
        [this] { placeMainWindow(); },
        [this] { parts_.utility.create(); },
        [this] { parts_.imagingSoftware.startUp(); },
        [this] { parts_.telescopeWindow.linkAtStartUp(); },
        [this] { openProfile(); },
        [this] { parts_.site.restoreUseTelescope(); },
        [this] { checkSite(); },
    };
    for (const auto& step : steps) {
        if (parts_.state.AppUnloading) return true;
        try {
            step();
        } catch (const SettingsFailure&) {
            throw;
        } catch (...) {
            parts_.state.LastMessage =
                platform::errorReport(platform::currentError(), "frmMain Sub Form_Load");
            parts_.log.AddToLog(parts_.state.LastMessage);
        }
    }
    return true;
}

/// An operator who has chosen a telescope once has the platform.
bool StartUp::ASCOMPlatformIsInstalled() {
    if (!parts_.settings.GetSetting("Main", "MyTelescopeID", "").empty()) return true;
    try {
        parts_.machine.automation.create("ScopeSim.Telescope");
        return true;
    } catch (const platform::OperationError&) {
        return false;
    }
}

void StartUp::tellThatPlatformIsMissing() {
    const std::string text = joinLines({"The ASCOM Platform is not", "installed on this computer!!", "",
                                        "Please download from site:", "https://ascom-standards.org"});
    parts_.main.run.txtInstructions.setText(text);
    parts_.machine.dialogs.messageBox(kProgramTitle, text, Dialogs::Icon::kCritical, Dialogs::Buttons::kOk);
}

/// The first two lines come before the log file: they are in the window only.
void StartUp::chooseFolders() {
    const platform::Desktop& desktop = parts_.machine.desktop;
    const std::string known = GetOSName(desktop.systemVersion());
    const bool vista = isVista(known);
    const DataFolders folders = chooseDataFolders(parts_.machine.folders, parts_.settings, parts_.popups,
                                                  desktop.userProfile(), vista);
    setup_.txtLogPath.setText(folders.log);
    parts_.log.AddToLog("OS: " + (vista ? "Vista" : known.empty() ? desktop.systemName() : known));
    parts_.log.AddToLog("Log folder: " + folders.log);
    parts_.log.SetLogStream(folders.log, parts_.popups);
    if (parts_.machine.provideTestImage) parts_.machine.provideTestImage(folders.images);
}

void StartUp::showLog() {
    parts_.logForm.show();
    parts_.log.AddToLog("Vantrel Version " + versionText());
}

void StartUp::fillFields() {
    parts_.methods.restore();
    parts_.solverFields.restore();
    parts_.catalogs.restore();
    parts_.fields.read();
    parts_.preflight.showProspect();
    parts_.methods.restoreImageLink();
    parts_.fieldsFilled = true;
}

void StartUp::placeMainWindow() {
    restorePosition(parts_.main, parts_.settings, "Main");
    const std::string height = std::to_string(parts_.main.place().height);
    parts_.settings.SaveMainSetting("MainHeight", height);
    parts_.settings.SaveMainSetting("MainScaleHeight", height);
    parts_.Timer1.setEnabled(true);
}

void StartUp::openProfile() {
    parts_.profile = parts_.machine.automation.create("DriverHelper.Profile");
    parts_.profile->put("DeviceType", "Utility");
}

void StartUp::checkSite() {
    if (!parts_.site.CheckSite()) {
        const std::string text = joinLines({"Error in observer site!", "Please check Setup Tab"});
        parts_.main.run.txtInstructions.setText(text);
        parts_.log.AddToLog(text);
        return;
    }
    parts_.log.AddToLog(
        "Telescope Site: Latitude = " + formatNumber(parts_.telescope.SiteLatitude(), "0.0000") +
        ", Longitude = " + formatNumber(parts_.telescope.SiteLongitude(), "0.0000"));
    parts_.measurement.ShowStartingInstructions();
    applyOnTop(parts_.main, setup_.mnuSetOnTop, parts_.settings);
    parts_.fields.fillEmptyFields();
}

}  // namespace vantrel::app
