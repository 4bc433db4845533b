// The dialog of the switches.
#pragma once

#include <functional>

#include "engine/ports.h"
#include "platform/form.h"

namespace vantrel::app {

/// Shows what the settings say when it opens and stores every switch when it closes; the night's brightness
/// and the pictures that the mount is aligned for are stored, and seen, at once.
class frmOptions : public platform::Form {
  public:
    frmOptions(platform::Screen& screen, engine::SettingsPort& settings);

    platform::CheckBox chkImagingSWVersionCheck, chkGreenColors;
    platform::ComboBox cmbNightBrightness;
    platform::CheckBox chkEnableRestoreImagingSW, chkLeastSquares, chkClosingPlate, chkExactMark;
    /// What the pictures take that the mount is aligned for.
    platform::TextBox txtPictureExposure;  // seconds
    platform::CheckBox chkPictureGuided;
    platform::TextBox txtPictureDeclination, txtFromGuideStar;  // degrees
    platform::Label lblNeededTolerance;                         // what follows from it
    platform::Button cmdOK;

    std::function<void()> onPicturesChanged = [] {};

    /// The night colours were switched elsewhere, or their step of brightness, from 3 to 1.
    void showNight(bool night) { chkGreenColors.setValue(night ? 1 : 0); }
    void showNightBrightness(double step);

  private:
    void setUpPictures(engine::SettingsPort& settings);
    void showPictures(engine::SettingsPort& settings);
};

}  // namespace vantrel::app
