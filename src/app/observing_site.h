// Where the telescope stands: the site fields of the set-up tab, stored as decimal degrees.
#pragma once

#include <functional>
#include <optional>

#include "app/setup_panel.h"
#include "engine/ports.h"
#include "engine/run_state.h"
#include "platform/site_angle.h"

namespace vantrel::app {

/// What the mount says of its site, in degrees; nothing when it can't tell.
struct MountSite {
    std::function<std::optional<double>()> latitude, longitude;
};

class ObservingSite {
  public:
    /// Takes over the fields' events.
    ObservingSite(SetupPanel& panel, engine::SettingsPort& settings, engine::LogPort& log,
                  engine::MessagePort& messages, engine::UtilityPort& utility, engine::RunState& state,
                  MountSite mount);

    /// Ticks "Use telescope" as stored, which reads the site from the mount.
    void restoreUseTelescope();

    /// Shows the stored site; false, and logged, when it is missing or can't be read.
    bool CheckSite();

    /// Stores what the fields show; nothing for one that is empty. Failures are logged.
    void SetSite();

  private:
    void leave();
    void refuseNonsense(platform::TextBox& box, const char* key, platform::SiteAxis axis);
    void store(const char* key, const platform::TextBox& box, platform::SiteAxis axis);
    void chkUseTelescopeLocation_Click();
    void useTelescopeSite();
    bool showStored(const char* key, platform::TextBox& box);

    SetupPanel& panel_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    engine::MessagePort& messages_;
    engine::UtilityPort& utility_;
    engine::RunState& state_;
    MountSite mount_;
};

}  // namespace vantrel::app
