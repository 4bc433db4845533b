// The dialog of the switches.
#pragma once

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// Shows what the settings say when it opens and stores every switch when it closes; the night's brightness
/// is stored, and seen, at once.
class frmOptions : public platform::Form {
  public:
    frmOptions(platform::Screen& screen, engine::SettingsPort& settings);

    platform::CheckBox chkImagingSWVersionCheck, chkGreenColors;
    platform::ComboBox cmbNightBrightness;
    platform::CheckBox chkEnableRestoreImagingSW, chkLeastSquares, chkClosingPlate, chkExactMark;
    platform::Button cmdOK;

    /// The night colours were switched elsewhere, or their step of brightness, from 3 to 1.
    void showNight(bool night) { chkGreenColors.setValue(night ? 1 : 0); }
    void showNightBrightness(double step);
};

}  // namespace vantrel::app
