#include "platesolve/frm_solve_picture.h"

namespace vantrel::platesolve {

using platform::Words;

frmSolvePicture::frmSolvePicture(platform::Screen& screen)
    : Form(screen, "frmSolvePicture", Words::tr("Solve a Picture"), {140, 90, 900, 560}),
      txtFile(*this, "txtFile"),
      cmdChooseFile(*this, "cmdChooseFile", "..."),
      txtScaleHint(*this, "txtScaleHint"),
      cmdSolve(*this, "cmdSolve", Words::tr("Solve")),
      cmdStop(*this, "cmdStop", Words::tr("Stop")),
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
        Words::tr("A picture of any camera: FITS, also packed (.gz, .fz), JPEG, PNG, TIFF or a raw file"));
    cmdChooseFile.setToolTip(Words::tr("Choose a picture file"));
    txtScaleHint.setToolTip(Words::tr("Arc-seconds per pixel; empty: as the file tells, or any"));
    cmdSolve.setToolTip(Words::tr("Find out where the picture points"));
    txtRoll.setToolTip(Words::tr("As the log tells it: 180 with north up and east left"));
    txtPositionAngle.setToolTip(Words::tr("Where the upper edge points: from north through east"));
    for (platform::TextBox* box :
         {&txtCentreRA, &txtCentreDec, &txtScale, &txtRoll, &txtPositionAngle, &txtField, &txtMatched})
        box->setReadOnly(true);
    cmdStop.setEnabled(false);
    cmdOK.onClick = [this] { unload(); };
}

}  // namespace vantrel::platesolve
