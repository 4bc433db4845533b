// The main form's "Plate Solve" tab.
#pragma once

#include "platform/form.h"

namespace vantrel::platesolve {

struct PlateSolvePanel {
    explicit PlateSolvePanel(platform::Form& form);

    platform::OptionGroup methods;
    platform::OptionButton optPinPoint, optAutoAstrometry;  // optPlateSolveMethod(0) and (1)

    // PinPoint
    platform::Frame framePP;
    platform::TextBox txtSolveMinSiz, txtSolveMinBrt, txtSolveMinSig, txtSolveFilter;
    platform::TextBox txtSolveScaleH, txtSolveScaleV;
    platform::TextBox txtSolveMinStars, txtSolveMaxRes, txtMaxSolveStars;
    platform::ComboBox cmbppCat;
    platform::TextBox txtCatPath, txtCatExp, txtCatMaxMag;
    platform::Button cmdSetDir, cmdTestCatPath;
    platform::Label lblCatTest;
    platform::CheckBox chkSpiralSearch;
    platform::Button cmdGetImageScalePP;  // cmdGetImageScale(0)

    // TheSky image link
    platform::Frame frameTheSky;
    platform::OptionGroup imageLinks;
    platform::OptionButton optImageLinkCCDSoft, optImageLinkTheSky;
    platform::TextBox txtTheSkyImageScale, txtTheSkyScreenFOV;
    platform::Button cmdGetImageScaleTheSky;  // cmdGetImageScale(1)
};

}  // namespace vantrel::platesolve
