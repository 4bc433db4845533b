#include "correction/frm_polar_plot.h"

namespace vantrel::correction {

frmPolarPlot::frmPolarPlot(platform::Screen& screen)
    : Form(screen, "frmPolarPlot", "Polar Plot", {120, 120, 560, 420}),
      picPolarPlot(*this, "picPolarPlot"),
      txtMagnitude(*this, "txtMagnitude"),
      txtAngle(*this, "txtAngle"),
      lblRA_Unit(*this, "lblRA_Unit", ""),
      lblFromPole(*this, "lblFromPole", ""),
      txtAltitudeError(*this, "txtAltitudeError"),
      txtAzimuthError(*this, "txtAzimuthError"),
      lblElevation_Unit(*this, "lblElevation_Unit", ""),
      lblUpFromPole(*this, "lblUpFromPole", ""),
      lblAzimuth_Unit(*this, "lblAzimuth_Unit", ""),
      lblRightOfPole(*this, "lblRightOfPole", ""),
      lblUnits(*this, "lblUnits", ""),
      txtOffsetRA(*this, "txtOffsetRA"),
      txtOffsetDec(*this, "txtOffsetDec"),
      txtEstimateElevation(*this, "txtEstimateElevation"),
      txtEstimateAzimuth(*this, "txtEstimateAzimuth"),
      txtUncertainty(*this, "txtUncertainty"),
      txtElevationSigma(*this, "txtElevationSigma"),
      txtAzimuthSigma(*this, "txtAzimuthSigma"),
      txtEstimateElevationSigma(*this, "txtEstimateElevationSigma"),
      txtEstimateAzimuthSigma(*this, "txtEstimateAzimuthSigma"),
      lblOnSky(*this, "lblOnSky", ""),
      lblDoubt(*this, "lblDoubt", ""),
      cmdPlates(*this, "cmdPlates", "Plates"),
      chkHistory(*this, "chkHistory", "Earlier measurements"),
      cmdHistory(*this, "cmdHistory", "Measurements"),
      txtPositionEastWest(*this, "txtPositionEastWest"),
      txtPositionUpDown(*this, "txtPositionUpDown"),
      mnuCopyPicture(*this, "mnuCopyPicture", "Copy Picture"),
      mnuCopyValues(*this, "mnuCopyValues", "Copy Values"),
      mnuSavePng(*this, "mnuSavePng", "Save as PNG"),
      mnuSaveSvg(*this, "mnuSaveSvg", "Save as SVG"),
      lblExport(*this, "lblExport", "") {
    for (platform::TextBox* box :
         {&txtMagnitude, &txtAngle, &txtAltitudeError, &txtAzimuthError, &txtOffsetRA, &txtOffsetDec,
          &txtEstimateElevation, &txtEstimateAzimuth, &txtUncertainty, &txtElevationSigma, &txtAzimuthSigma,
          &txtEstimateElevationSigma, &txtEstimateAzimuthSigma, &txtPositionEastWest, &txtPositionUpDown})
        box->setReadOnly(true);
    lblDoubt.setVisible(false);
    cmdHistory.setToolTip("All measurements over the nights");
}

}  // namespace vantrel::correction
