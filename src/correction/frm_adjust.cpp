#include "correction/frm_adjust.h"

namespace vantrel::correction {

frmAdjust::Adjuster::Adjuster(platform::Form& form, const std::string& name)
    : lblArrow(form, "lbl" + name + "Arrow", ""),
      lblMove(form, "lbl" + name + "Move", ""),
      lblSigma(form, "lbl" + name + "Sigma", ""),
      lblBolt(form, "lbl" + name + "Bolt", ""),
      txtPerTurn(form, "txt" + name + "PerTurn", ""),
      chkOtherWay(form, "chk" + name + "OtherWay", "Other way") {}

frmAdjust::frmAdjust(platform::Screen& screen)
    : Form(screen, "frmAdjust", "Adjust", {200, 100, 720, 460}),
      azimuth(*this, "Azimuth"),
      elevation(*this, "Elevation"),
      picAdjust(*this, "picAdjust"),
      lblLiveTotal(*this, "lblLiveTotal", ""),
      lblLiveState(*this, "lblLiveState", ""),
      lblAge(*this, "lblAge", ""),
      chkDoneSound(*this, "chkDoneSound", "Sound when done"),
      chkTones(*this, "chkTones", "Tones"),
      chkSpoken(*this, "chkSpoken", "Spoken"),
      chkPhone(*this, "chkPhone", "On the phone"),
      lblPhone(*this, "lblPhone", ""),
      cmdLock(*this, "cmdLock", "Lock"),
      cmdBothTurned(*this, "cmdBothTurned", "I turned both"),
      cmdMeasureAgain(*this, "cmdMeasureAgain", "Measure again"),
      cmdEndAdjust(*this, "cmdEndAdjust", "End") {}

}  // namespace vantrel::correction
