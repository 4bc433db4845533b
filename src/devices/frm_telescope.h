// The Telescope window: which driver is used, and whether it is connected.
#pragma once

#include "platform/form.h"

namespace vantrel::devices {

class frmTelescope : public platform::Form {
  public:
    explicit frmTelescope(platform::Screen& screen)
        : Form(screen, "frmTelescope", "Telescope", {0, 0, 360, 190}),
          fraTelescopeSelection(*this, "fraTelescopeSelection", "Telescope Selection"),
          txtTelescopeName(*this, "txtTelescopeName"),
          cmdPickTelescope(*this, "cmdPickTelescope", "Select"),
          cmdTelescopeSetup(*this, "cmdTelescopeSetup", "Setup"),
          cmdConnectTelescope(*this, "cmdConnectTelescope", "Connect"),
          cmdDisconnectTelescope(*this, "cmdDisconnectTelescope", "Disconnect"),
          txtTelescopeSelectionStatus(*this, "txtTelescopeSelectionStatus", " Not Connected") {
        txtTelescopeName.setReadOnly(true);
        txtTelescopeSelectionStatus.setReadOnly(true);
    }

    platform::Frame fraTelescopeSelection;
    platform::TextBox txtTelescopeName;
    platform::Button cmdPickTelescope, cmdTelescopeSetup, cmdConnectTelescope, cmdDisconnectTelescope;
    platform::TextBox txtTelescopeSelectionStatus;
};

}  // namespace vantrel::devices
