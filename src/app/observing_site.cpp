#include "app/observing_site.h"

#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::app {

using namespace platform;

namespace {

constexpr const char* kUseTelescope = "UseTelescopeSiteLocation";
constexpr const char* kLatitude = "SiteLatitude";
constexpr const char* kLongitude = "SiteLongitude";

}  // namespace

ObservingSite::ObservingSite(SetupPanel& panel, engine::SettingsPort& settings, engine::LogPort& log,
                             engine::MessagePort& messages, engine::UtilityPort& utility,
                             engine::RunState& state, MountSite mount)
    : panel_(panel),
      settings_(settings),
      log_(log),
      messages_(messages),
      utility_(utility),
      state_(state),
      mount_(std::move(mount)) {
    panel_.txtSiteLat.onLeave = [this] { leave(); };
    panel_.txtSiteLong.onLeave = [this] { leave(); };
    panel_.chkUseTelescopeLocation.onClick = [this] { chkUseTelescopeLocation_Click(); };
}

void ObservingSite::restoreUseTelescope() {
    const std::string stored = settings_.GetMainSetting(kUseTelescope, "1");
    panel_.chkUseTelescopeLocation.setValue(stored == "True" || leadingNumber(stored) != 0 ? 1 : 0);
}

bool ObservingSite::CheckSite() {
    OperationError failure(0, "", "");
    try {
        if (showStored(kLatitude, panel_.txtSiteLat) && showStored(kLongitude, panel_.txtSiteLong))
            return true;
    } catch (...) {
        failure = currentError();
    }
    log_.AddToLog(failure.source() + " error: " + failure.description() + " (" +
                  std::to_string(failure.number()) + ")");
    log_.AddToLog("Error setting site position, check observer site entry for errors!");
    return false;
}

/// False when nothing is stored; throws when it isn't a number.
bool ObservingSite::showStored(const char* key, TextBox& box) {
    const std::string stored = trimmed(settings_.GetMainSetting(key, ""));
    if (stored.empty()) return false;
    box.setText(utility_.DegreesToDMS(toNumber(stored)));
    return true;
}

void ObservingSite::leave() {
    refuseNonsense(panel_.txtSiteLong, kLongitude, SiteAxis::kLongitude);
    refuseNonsense(panel_.txtSiteLat, kLatitude, SiteAxis::kLatitude);
    SetSite();
}

/// The box goes back to what is stored. One that was never filled may be left empty.
void ObservingSite::refuseNonsense(TextBox& box, const char* key, SiteAxis axis) {
    if (readSiteAngle(box.text(), axis)) return;
    const std::string refused = box.text();
    try {
        if (!showStored(key, box)) box.setText("");
    } catch (...) {
        box.setText("");  // neither can that be read
    }
    if (refused == box.text()) return;
    state_.LastMessage =
        joinLines({noSiteAngle(refused, axis).english(), howToWriteSiteAngle(axis).english()});
    log_.AddToLog(state_.LastMessage);
    messages_.ShowPopupMessage(state_.LastMessage, 5);
}

void ObservingSite::SetSite() {
    try {
        store(kLongitude, panel_.txtSiteLong, SiteAxis::kLongitude);
        store(kLatitude, panel_.txtSiteLat, SiteAxis::kLatitude);
    } catch (...) {
        state_.LastMessage = errorReport(currentError(), "frmMain Sub SetSite");
        log_.AddToLog(state_.LastMessage);
    }
}

/// The utility reads signs, not the letters of hemispheres.
void ObservingSite::store(const char* key, const TextBox& box, SiteAxis axis) {
    if (box.text().empty()) return;
    const auto angle = readSiteAngle(box.text(), axis);
    const double degrees = utility_.DMSToDegrees(angle ? angle->unlettered : box.text());
    settings_.SaveMainSetting(key, toText(angle && angle->opposite ? -degrees : degrees));
}

void ObservingSite::chkUseTelescopeLocation_Click() {
    try {
        if (panel_.chkUseTelescopeLocation.ticked())
            useTelescopeSite();
        else
            settings_.SaveMainSetting(kUseTelescope, "False");
    } catch (...) {
        state_.LastMessage = errorReport(currentError(), "frmMain Sub chkUseTelescopeLocation_Click");
        log_.AddToLog(state_.LastMessage);
    }
}

void ObservingSite::useTelescopeSite() {
    const auto latitude = mount_.latitude();
    const auto longitude = mount_.longitude();
    if (!latitude || !longitude) {
        panel_.chkUseTelescopeLocation.setEnabled(false);
        panel_.chkUseTelescopeLocation.setValue(0);  // which stores that the telescope isn't used
        return;
    }
    settings_.SaveMainSetting(kUseTelescope, "True");
    panel_.txtSiteLat.setText(utility_.DegreesToDMS(*latitude));
    panel_.txtSiteLong.setText(utility_.DegreesToDMS(*longitude));
    SetSite();
}

}  // namespace vantrel::app
