// The window of what real mounts and cameras need to be known: where their servers are, and what a mount is
// told.
#pragma once

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// Shows what the settings say when it opens, and stores what was changed when it closes.
class frmDevices : public platform::Form {
  public:
    frmDevices(platform::Screen& screen, engine::SettingsPort& settings);

    platform::TextBox txtIndiServers;    // blanks between several
    platform::TextBox txtAlpacaServers;  // those that a search doesn't find
    platform::TextBox txtAlpacaPort;     // of the search
    platform::TextBox txtMountPort, txtMountBaudRate;
    platform::CheckBox chkTellMount, chkAbortSlewOnStop;
    platform::Button cmdOK;

  private:
    void fill(engine::SettingsPort& settings);
    void store(engine::SettingsPort& settings);
};

}  // namespace vantrel::app
