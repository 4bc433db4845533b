// The main form's plot of the plates' declination errors.
#pragma once

#include "platform/form.h"

namespace vantrel::correction {

struct ErrorPlotPanel {
    explicit ErrorPlotPanel(platform::Form& form)
        : picErrorPlot(form, "picErrorPlot"),
          txtRARange(form, "txtRARange"),
          txtDecError(form, "txtDecError"),
          cmdPolarPlot(form, "cmdPolarPlot", "Polar Plot") {
        txtRARange.setReadOnly(true);
        txtDecError.setReadOnly(true);
    }

    platform::PictureBox picErrorPlot;
    platform::TextBox txtRARange, txtDecError;  // spreads, degrees
    platform::Button cmdPolarPlot;
};

}  // namespace vantrel::correction
