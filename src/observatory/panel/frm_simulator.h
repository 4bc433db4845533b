// The window of the simulated mount: the operator's hands on it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "platform/form.h"

namespace vantrel::observatory {

struct frmSimulator : platform::Form {
    explicit frmSimulator(platform::Screen& screen);

    /// Six buttons of one adjuster, "cmdAzimuth(0)" and so on: coarse, fine and finest turn one way, and the
    /// same turns the other way.
    struct Adjuster {
        Adjuster(Form& form, const std::string& name);
        std::array<platform::Button, 6> turns;
    };
    static constexpr std::array<double, 6> kTurns{-10, -1, -0.1, 0.1, 1, 10};  // arc-minutes

    platform::TextBox txtAzimuthError, txtElevationError;
    Adjuster azimuth, elevation;
    platform::CheckBox chkShowError;
    platform::Button cmdAskew;

    platform::TextBox txtRA, txtDec, txtHourAngle, txtAltitude;
    platform::Label lblState;
    platform::Button cmdNorth, cmdSouth, cmdEast, cmdWest, cmdHalt;
    platform::ComboBox cmbRate;
    platform::CheckBox chkTracking;

    platform::ComboBox cmbStar;
    platform::Label lblStarHint;
    platform::Button cmdGoToStar, cmdCenterStar, cmdSync;

    platform::TextBox txtLatitude, txtLongitude;
    platform::TextBox txtFocalLength, txtPixelSize, txtWidth, txtHeight, txtRotation, txtExposure;
    platform::TextBox txtSeeing, txtSkyLevel, txtLimitingMagnitude, txtHotPixels, txtPointingNoise;
    platform::TextBox txtAirPressure, txtAirTemperature;
    platform::TextBox txtRollNoise, txtFlexure, txtDeclinationJump, txtDeclinationJumpSlew, txtPeriodicError,
        txtWormPeriod, txtClockError;
    platform::CheckBox chkMirrored, chkRefraction;
    platform::Label lblField;

    platform::Label lblStatus;
};

}  // namespace vantrel::observatory
