#include "app/interlocked_controls.h"

#include "app/parts.h"

namespace vantrel::app {

std::vector<platform::Control*> interlockedControls(Parts& parts) {
    engine::RunPanel& run = parts.main.run;
    devices::ImagingPanel& imaging = parts.main.imaging;
    platesolve::PlateSolvePanel& solve = parts.main.plateSolve;
    SetupPanel& setup = parts.main.setup;
    devices::frmTelescope& telescope = parts.telescopeForm;
    platesolve::frmPixelScale& scale = parts.pixelScaleForm;
    return {// The measurement's own figures
            &run.txtDeltaRA, &run.txtExposeInterval, &run.txtDelayAfterSlew, &run.txtPostExpDelay,
            &run.txtPlates, &run.txtPlateExposures, &run.chkTurnByHand, &parts.preflightForm.cmdSlewThere,
            &run.optSlewEast, &run.optSlewWest, &parts.main.exposures.cmdExposeSolve,
            // Mount and site
            &telescope.cmdPickTelescope, &telescope.cmdTelescopeSetup, &telescope.cmdConnectTelescope,
            &telescope.cmdDisconnectTelescope, &setup.cmdTelescope, &parts.main.status.cmdMountStatus,
            &parts.welcomeForm.cmdTrySimulator, &parts.welcomeForm.cmdMyDevices, &setup.txtSiteLat,
            &setup.txtSiteLong, &setup.chkUseTelescopeLocation, &setup.txtSiteHeight, &setup.txtAirPressure,
            &setup.txtAirTemperature,
            // Camera and images
            &imaging.optCCDSoft, &imaging.optMaxIm, &imaging.optBuiltIn, &imaging.chkUseCCDSoftSubFrame,
            &imaging.cmdCamera, &parts.devicesForm.txtCameraGain, &parts.devicesForm.txtCameraOffset,
            &setup.txtImagePath, &setup.Command1, &setup.chkSaveImages,
            // The solver
            &solve.optPinPoint, &solve.optAutoAstrometry, &solve.txtSolveMinSiz, &solve.txtSolveMinBrt,
            &solve.txtSolveMinSig, &solve.txtSolveFilter, &solve.txtSolveScaleH, &solve.txtSolveScaleV,
            &solve.txtSolveMinStars, &solve.txtSolveMaxRes, &solve.txtMaxSolveStars, &solve.cmbppCat,
            &solve.txtCatPath, &solve.txtCatExp, &solve.txtCatMaxMag, &solve.cmdSetDir, &solve.cmdTestCatPath,
            &solve.chkSpiralSearch, &solve.cmdGetImageScalePP, &solve.optImageLinkCCDSoft,
            &solve.optImageLinkTheSky, &solve.txtTheSkyImageScale, &solve.txtTheSkyScreenFOV,
            &solve.cmdGetImageScaleTheSky, &scale.txtFL, &scale.cmbUnits, &scale.txtPixelSizeX,
            &scale.txtPixelSizeY, &scale.cmbCamBin, &scale.cmdCalculate};
}

}  // namespace vantrel::app
