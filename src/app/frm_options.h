// The dialog of the switches.
#pragma once

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// Shows what the settings say when it opens and stores every switch when it closes.
class frmOptions : public platform::Form {
  public:
    frmOptions(platform::Screen& screen, engine::SettingsPort& settings);

    platform::CheckBox chkImagingSWVersionCheck, chkGreenColors, chkEnableRestoreImagingSW, chkLeastSquares,
        chkClosingPlate;
    platform::Button cmdOK;
};

}  // namespace vantrel::app
