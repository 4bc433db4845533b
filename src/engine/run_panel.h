// The main form's controls that the run, the correction and the manual exposures share.
#pragma once

#include "platform/form.h"

namespace vantrel::engine {

struct RunPanel {
    explicit RunPanel(platform::Form& form);

    platform::Button cmdRun, cmdStop, cmdNext, cmdSkip, cmdAdjust, cmdExpose;
    platform::TextBox txtInstructions;
    platform::TextBox txtDeltaRA, txtExposeInterval, txtDelayAfterSlew, txtPostExpDelay;
    platform::TextBox txtPlates, txtPlateExposures;
    platform::CheckBox chkTurnByHand;
    platform::Label lblProspect;  // how good the measurement will be
    platform::Button cmdPreflight;
    platform::OptionGroup slewDirection;
    platform::OptionButton optSlewEast, optSlewWest;
    platform::Label lblSlew, lblExpose, lblSolve;
    platform::Label lblFrame1, lblFrame2, lblFrame3;
    platform::Label lblMeasure;
    platform::Label lblAlt, lblAz;
    platform::Label lblProgress;  // what goes on, and how long it will take
    platform::Gauge gaugeProgress;
};

}  // namespace vantrel::engine
