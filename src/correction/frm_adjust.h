// The window to adjust by at the mount: what remains of each adjuster, in digits to be read from afar.
#pragma once

#include "platform/form.h"

namespace vantrel::correction {

class frmAdjust : public platform::Form {
  public:
    explicit frmAdjust(platform::Screen& screen);

    /// One of the two adjusters. A bolt that turns clockwise moves the axis west, or up, unless it is said to
    /// go the other way.
    struct Adjuster {
        Adjuster(platform::Form& form, const std::string& name);
        platform::Label lblArrow;
        platform::Label lblMove;   // "turn west 3.2'"; disabled while it is stale
        platform::Label lblSigma;  // "± 8″"
        platform::Label lblBolt;   // "a quarter turn clockwise"
        platform::TextBox txtPerTurn;
        platform::CheckBox chkOtherWay;
    };

    Adjuster azimuth, elevation;
    platform::PictureBox picAdjust;
    platform::Label lblLiveTotal;
    platform::Label lblLiveState;  // whether the numbers may be followed, and how the work stands
    platform::Label lblAge;
    platform::CheckBox chkDoneSound, chkTones, chkSpoken, chkPhone;
    platform::Label lblPhone;  // where the page for the phone is, or why there is none
    platform::Button cmdLock, cmdBothTurned, cmdMeasureAgain, cmdEndAdjust;
};

}  // namespace vantrel::correction
