// The window of what real mounts and cameras need to be known: where their servers are, and what a mount is
// told.
#pragma once

#include <functional>

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// Shows what the settings say when it opens, and stores what was changed when it closes. The camera's own
/// settings it stores when a field is left, so that what the camera makes of them is seen beside them.
class frmDevices : public platform::Form {
  public:
    frmDevices(platform::Screen& screen, engine::SettingsPort& settings);

    platform::TextBox txtIndiServers;    // blanks between several
    platform::TextBox txtAlpacaServers;  // those that a search doesn't find
    platform::TextBox txtAlpacaPort;     // of the search
    platform::TextBox txtMountPort, txtMountBaudRate;
    platform::CheckBox chkTellMount, chkAbortSlewOnStop;
    platform::TextBox txtCameraGain, txtCameraOffset;  // empty: as the camera has it
    platform::CheckBox chkCameraCooling;
    platform::TextBox txtCameraTemperature;                            // degrees Celsius
    platform::Label lblCameraGain, lblCameraOffset, lblCameraCooling;  // what the camera says of them
    platform::Button cmdOK;

    /// What the camera is to be set to was changed, and is stored.
    std::function<void()> onCameraChanged;

  private:
    void fill(engine::SettingsPort& settings);
    void store(engine::SettingsPort& settings);
    void storeCamera(engine::SettingsPort& settings);
};

}  // namespace vantrel::app
