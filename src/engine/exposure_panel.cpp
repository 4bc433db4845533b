#include "engine/exposure_panel.h"

#include <string>

namespace vantrel::engine {

ExposurePanel::ExposurePanel(platform::Form& form)
    : chkExposeContinuousEnable(form, "chkExposeContinuousEnable", "Continuous"),
      txtContinuousExposeInterval(form, "txtContinuousExposeInterval", "1"),
      txtContinuousExposeDelay(form, "txtContinuousExposeDelay", "0"),
      chkCrossHairEnable(form, "chkCrossHairEnable", "Cross hair"),
      cmbCrossHairWidth(form, "cmbCrossHairWidth"),
      cmdExposeSolve(form, "cmdExposeSolve", "Expose && Solve") {
    chkCrossHairEnable.setToolTip("Show cross hair");
    constexpr int kWidest = 9;  // pixels
    for (int width = 1; width <= kWidest; ++width) cmbCrossHairWidth.addItem(std::to_string(width));
    cmbCrossHairWidth.setText("1");
}

}  // namespace vantrel::engine
