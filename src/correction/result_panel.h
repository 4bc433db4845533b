// The main form's result: the dial, what to do with each adjuster, and whether it is good enough.
#pragma once

#include "platform/form.h"

namespace vantrel::correction {

struct ResultPanel {
    explicit ResultPanel(platform::Form& form)
        : picDial(form, "picDial"),
          lblAzimuthAdvice(form, "lblAzimuthAdvice", ""),
          lblElevationAdvice(form, "lblElevationAdvice", ""),
          lblTotal(form, "lblTotal", ""),
          lblVerdict(form, "lblVerdict", platform::Words::tr("No measurement yet")),
          txtTolerance(form, "txtTolerance", "2") {
        txtTolerance.setToolTip(
            platform::Words::tr("Arc-minutes from the pole that are good enough for you"));
    }

    platform::PictureBox picDial;
    platform::Label lblAzimuthAdvice, lblElevationAdvice;
    platform::Label lblTotal;  // distance from the pole, its uncertainty, and when it was measured
    platform::Label lblVerdict;
    platform::TextBox txtTolerance;  // arc-minutes
};

}  // namespace vantrel::correction
