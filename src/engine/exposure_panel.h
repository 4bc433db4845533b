// The main form's controls for exposures by hand.
#pragma once

#include "platform/form.h"

namespace vantrel::engine {

struct ExposurePanel {
    explicit ExposurePanel(platform::Form& form);

    platform::CheckBox chkExposeContinuousEnable;
    platform::TextBox txtContinuousExposeInterval, txtContinuousExposeDelay;
    platform::CheckBox chkCrossHairEnable;
    platform::ComboBox cmbCrossHairWidth;
    platform::Button cmdExposeSolve;
};

}  // namespace vantrel::engine
