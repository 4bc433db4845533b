// The "Solve a Picture" window: where a picture from anywhere points.
#pragma once

#include "platform/form.h"

namespace vantrel::platesolve {

class frmSolvePicture : public platform::Form {
  public:
    explicit frmSolvePicture(platform::Screen& screen);

    platform::TextBox txtFile;       // with drive letter, or a path of this machine
    platform::Button cmdChooseFile;  // "..." beside it
    platform::TextBox txtScaleHint;  // arc-seconds per pixel; may be empty
    platform::Button cmdSolve, cmdStop;
    platform::Label lblOutcome;                   // what is going on, and what came of it
    platform::Label lblRemark;                    // what the picture lacks, or what was taken for granted
    platform::TextBox txtCentreRA, txtCentreDec;  // J2000
    platform::TextBox txtScale;                   // arc-seconds per pixel, across and down
    platform::TextBox txtRoll, txtPositionAngle;  // degrees; the latter of the picture's upper edge
    platform::TextBox txtField;                   // degrees, across and down
    platform::TextBox txtMatched;                 // stars of the catalogue, of those in the picture
    platform::PictureBox picPlate;                // the matched stars are circled
    platform::Button cmdOK;
};

}  // namespace vantrel::platesolve
