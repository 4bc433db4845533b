#include "platesolve/frm_solve_picture.h"

namespace vantrel::platesolve {

frmSolvePicture::frmSolvePicture(platform::Screen& screen)
    : Form(screen, "frmSolvePicture", "Solve a Picture", {140, 90, 900, 560}),
      txtFile(*this, "txtFile"),
      cmdChooseFile(*this, "cmdChooseFile", "..."),
      txtScaleHint(*this, "txtScaleHint"),
      cmdSolve(*this, "cmdSolve", "Solve"),
      cmdStop(*this, "cmdStop", "Stop"),
      lblOutcome(*this, "lblOutcome", ""),
      lblRemark(*this, "lblRemark", ""),
      txtCentreRA(*this, "txtCentreRA"),
      txtCentreDec(*this, "txtCentreDec"),
      txtScale(*this, "txtScale"),
      txtRoll(*this, "txtRoll"),
      txtPositionAngle(*this, "txtPositionAngle"),
      txtField(*this, "txtField"),
      txtMatched(*this, "txtMatched"),
      picPlate(*this, "picPlate"),
      cmdOK(*this, "cmdOK", "OK") {
    txtFile.setToolTip(
        "A picture of any camera: FITS, also packed (.gz, .fz), JPEG, PNG, TIFF or a raw file");
    cmdChooseFile.setToolTip("Choose a picture file");
    txtScaleHint.setToolTip("Arc-seconds per pixel; empty: as the file tells, or any");
    cmdSolve.setToolTip("Find out where the picture points");
    txtRoll.setToolTip("As the log tells it: 180 with north up and east left");
    txtPositionAngle.setToolTip("Where the upper edge points: from north through east");
    for (platform::TextBox* box :
         {&txtCentreRA, &txtCentreDec, &txtScale, &txtRoll, &txtPositionAngle, &txtField, &txtMatched})
        box->setReadOnly(true);
    cmdStop.setEnabled(false);
    cmdOK.onClick = [this] { unload(); };
}

}  // namespace vantrel::platesolve
