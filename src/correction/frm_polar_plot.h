// The polar plot window: where the mount's axis points, and its error in figures with units.
#pragma once

#include "platform/form.h"

namespace vantrel::correction {

class frmPolarPlot : public platform::Form {
  public:
    explicit frmPolarPlot(platform::Screen& screen);

    platform::PictureBox picPolarPlot;
    platform::TextBox txtMagnitude,
        txtAngle;  // distance from the pole and its direction, degrees CCW from up
    platform::Label lblRA_Unit, lblFromPole;
    platform::TextBox txtAltitudeError, txtAzimuthError;
    platform::Label lblElevation_Unit, lblUpFromPole, lblAzimuth_Unit, lblRightOfPole;
    platform::Label lblUnits;  // companion of the unit labels
    platform::TextBox txtOffsetRA, txtOffsetDec;
    platform::TextBox txtEstimateElevation, txtEstimateAzimuth, txtUncertainty;  // by least squares
    // One sigma in arc-seconds: of what stands above, and of the estimate
    platform::TextBox txtElevationSigma, txtAzimuthSigma;
    platform::TextBox txtEstimateElevationSigma, txtEstimateAzimuthSigma;
    platform::Label lblOnSky;    // the knob's azimuth and the sky's
    platform::Label lblDoubt;    // the estimate should count
    platform::Button cmdPlates;  // the plates that it came from
    platform::CheckBox chkHistory;
    platform::Button cmdHistory;
    platform::TextBox txtPositionEastWest, txtPositionUpDown;
    platform::MenuItem mnuCopyPicture, mnuCopyValues, mnuSavePng, mnuSaveSvg;
    platform::Label lblExport;  // what became of the last of those
};

}  // namespace vantrel::correction
