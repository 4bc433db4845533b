// Where the telescope stands: the site fields of the set-up tab, stored as decimal degrees.
#pragma once

#include <functional>
#include <optional>

#include "app/setup_panel.h"
#include "engine/ports.h"
#include "engine/run_state.h"

namespace vantrel::app {

/// What the mount says of its site, in degrees; nothing when it can't tell.
struct MountSite {
    std::function<std::optional<double>()> latitude, longitude;
};

class ObservingSite {
  public:
    /// Takes over the fields' events.
    ObservingSite(SetupPanel& panel, engine::SettingsPort& settings, engine::LogPort& log,
                  engine::UtilityPort& utility, engine::RunState& state, MountSite mount);

    /// Ticks "Use telescope" as stored, which reads the site from the mount.
    void restoreUseTelescope();

    /// Shows the stored site; false, and logged, when it is missing or can't be read.
    bool CheckSite();

    /// Stores what the fields show. Fields that can't be read are logged and nothing is stored for them.
    void SetSite();

  private:
    void chkUseTelescopeLocation_Click();
    void useTelescopeSite();
    bool showStored(const char* key, platform::TextBox& box);

    SetupPanel& panel_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    engine::UtilityPort& utility_;
    engine::RunState& state_;
    MountSite mount_;
};

}  // namespace vantrel::app
