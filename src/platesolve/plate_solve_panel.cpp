#include "platesolve/plate_solve_panel.h"

namespace vantrel::platesolve {

PlateSolvePanel::PlateSolvePanel(platform::Form& form)
    : optPinPoint(form, methods, "optPlateSolveMethod(0)", "PinPoint"),
      optAutoAstrometry(form, methods, "optPlateSolveMethod(1)", "AutoAstrometry"),
      framePP(form, "framePP", "PinPoint Plate Solve"),
      txtSolveMinSiz(form, "txtSolveMinSiz", "2"),
      txtSolveMinBrt(form, "txtSolveMinBrt", "200"),
      txtSolveMinSig(form, "txtSolveMinSig", "4.0"),
      txtSolveFilter(form, "txtSolveFilter", "0.0"),
      txtSolveScaleH(form, "txtSolveScaleH", "3.0"),
      txtSolveScaleV(form, "txtSolveScaleV", "3.0"),
      txtSolveMinStars(form, "txtSolveMinStars", "0"),
      txtSolveMaxRes(form, "txtSolveMaxRes", "0.0"),
      txtMaxSolveStars(form, "txtMaxSolveStars", "0"),
      cmbppCat(form, "cmbppCat"),
      txtCatPath(form, "txtCatPath"),
      txtCatExp(form, "txtCatExp", "30"),
      txtCatMaxMag(form, "txtCatMaxMag", "20.0"),
      cmdSetDir(form, "cmdSetDir", "..."),
      cmdTestCatPath(form, "cmdTestCatPath", "Test Path"),
      lblCatTest(form, "lblCatTest", ""),
      chkSpiralSearch(form, "chkSpiralSearch", "Use 5 x 5 spiral search if initial solution fails"),
      cmdGetImageScalePP(form, "cmdGetImageScale(0)", "Change Scale && Binning"),
      frameTheSky(form, "frameTheSky", "TheSky Image Link"),
      optImageLinkCCDSoft(form, imageLinks, "optImageLinkCCDSoft", "CCDSoft"),
      optImageLinkTheSky(form, imageLinks, "optImageLinkTheSky", "TheSky"),
      txtTheSkyImageScale(form, "txtTheSkyImageScale", "3.0"),
      txtTheSkyScreenFOV(form, "txtTheSkyScreenFOV"),
      cmdGetImageScaleTheSky(form, "cmdGetImageScale(1)", "Change Scale && Binning") {
    txtSolveScaleH.setToolTip("Unbinned scale");
    txtSolveScaleV.setToolTip("Unbinned scale");
    txtCatPath.setToolTip("Path to CD drive or catalog root");

    const std::initializer_list<platform::Control*> pinPoint = {
        &txtSolveMinSiz, &txtSolveMinBrt,   &txtSolveMinSig,    &txtSolveFilter,   &txtSolveScaleH,
        &txtSolveScaleV, &txtSolveMinStars, &txtSolveMaxRes,    &txtMaxSolveStars, &cmbppCat,
        &txtCatPath,     &txtCatExp,        &txtCatMaxMag,      &cmdSetDir,        &cmdTestCatPath,
        &lblCatTest,     &chkSpiralSearch,  &cmdGetImageScalePP};
    for (platform::Control* control : pinPoint) control->placeIn(framePP);
    const std::initializer_list<platform::Control*> theSky = {&optImageLinkCCDSoft, &optImageLinkTheSky,
                                                              &txtTheSkyImageScale, &txtTheSkyScreenFOV,
                                                              &cmdGetImageScaleTheSky};
    for (platform::Control* control : theSky) control->placeIn(frameTheSky);
    framePP.setVisible(false);
    frameTheSky.setVisible(false);
}

}  // namespace vantrel::platesolve
