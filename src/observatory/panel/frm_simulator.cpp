#include "observatory/panel/frm_simulator.h"

#include <algorithm>

namespace vantrel::observatory {

using platform::Words;

namespace {

/// In the lower right corner, beside the window that the operator reads meanwhile.
platform::Rectangle firstPlace(const platform::Rectangle& area) {
    constexpr int kWidth = 700;
    constexpr int kHeight = 650;  // with a title bar
    return {area.left + std::max(0, area.width - kWidth), area.top + std::max(0, area.height - kHeight), 560,
            480};
}

}  // namespace

frmSimulator::Adjuster::Adjuster(Form& form, const std::string& name)
    : turns{platform::Button(form, name + "(0)", "10'"),  platform::Button(form, name + "(1)", "1'"),
            platform::Button(form, name + "(2)", "0.1'"), platform::Button(form, name + "(3)", "0.1'"),
            platform::Button(form, name + "(4)", "1'"),   platform::Button(form, name + "(5)", "10'")} {}

frmSimulator::frmSimulator(platform::Screen& screen)
    : Form(screen, "frmSimulator", Words::tr("Polar Axis Simulator"), firstPlace(screen.workArea())),
      txtAzimuthError(*this, "txtAzimuthError"),
      txtElevationError(*this, "txtElevationError"),
      azimuth(*this, "cmdAzimuth"),
      elevation(*this, "cmdElevation"),
      chkShowError(*this, "chkShowError", Words::tr("Show the error")),
      cmdAskew(*this, "cmdAskew", Words::tr("Set It Askew")),
      txtRA(*this, "txtRA"),
      txtDec(*this, "txtDec"),
      txtHourAngle(*this, "txtHourAngle"),
      txtAltitude(*this, "txtAltitude"),
      lblState(*this, "lblState", ""),
      cmdNorth(*this, "cmdNorth", "N"),
      cmdSouth(*this, "cmdSouth", "S"),
      cmdEast(*this, "cmdEast", "E"),
      cmdWest(*this, "cmdWest", "W"),
      cmdHalt(*this, "cmdHalt", Words::tr("Halt")),
      cmbRate(*this, "cmbRate"),
      chkTracking(*this, "chkTracking", Words::tr("Tracking")),
      cmbStar(*this, "cmbStar"),
      lblStarHint(*this, "lblStarHint", ""),
      cmdGoToStar(*this, "cmdGoToStar", Words::tr("Go To")),
      cmdCenterStar(*this, "cmdCenterStar", Words::tr("Center")),
      cmdSync(*this, "cmdSync", Words::tr("Sync")),
      txtLatitude(*this, "txtLatitude"),
      txtLongitude(*this, "txtLongitude"),
      txtFocalLength(*this, "txtFocalLength"),
      txtPixelSize(*this, "txtPixelSize"),
      txtWidth(*this, "txtWidth"),
      txtHeight(*this, "txtHeight"),
      txtRotation(*this, "txtRotation"),
      txtExposure(*this, "txtExposure"),
      txtSeeing(*this, "txtSeeing"),
      txtSkyLevel(*this, "txtSkyLevel"),
      txtLimitingMagnitude(*this, "txtLimitingMagnitude"),
      txtHotPixels(*this, "txtHotPixels"),
      txtPointingNoise(*this, "txtPointingNoise"),
      txtAirPressure(*this, "txtAirPressure"),
      txtAirTemperature(*this, "txtAirTemperature"),
      txtRollNoise(*this, "txtRollNoise"),
      txtFlexure(*this, "txtFlexure"),
      txtDeclinationJump(*this, "txtDeclinationJump"),
      txtDeclinationJumpSlew(*this, "txtDeclinationJumpSlew"),
      txtPeriodicError(*this, "txtPeriodicError"),
      txtWormPeriod(*this, "txtWormPeriod"),
      txtClockError(*this, "txtClockError"),
      chkMirrored(*this, "chkMirrored", Words::tr("Mirrored")),
      chkRefraction(*this, "chkRefraction", Words::tr("Refraction")),
      lblField(*this, "lblField", ""),
      lblStatus(*this, "lblStatus", "") {
    for (platform::TextBox* readout : {&txtRA, &txtDec, &txtHourAngle, &txtAltitude})
        readout->setReadOnly(true);
    for (platform::TextBox* error : {&txtAzimuthError, &txtElevationError})
        error->setAlignment(platform::Alignment::kCentre);
    txtHotPixels.setToolTip(Words::tr("How many, or below 1 the share of all pixels"));
    txtDeclinationJumpSlew.setToolTip(
        Words::tr("Counted from the last change of the jump; 1 is the next slew"));
    chkShowError.setValue(1);
    cmdAskew.setToolTip(Words::tr("Somewhere within two degrees, without telling where"));
}

}  // namespace vantrel::observatory
