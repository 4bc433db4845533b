// The window of all measurements over the nights.
#pragma once

#include "platform/form.h"

namespace vantrel::correction {

class frmHistory : public platform::Form {
  public:
    explicit frmHistory(platform::Screen& screen);

    platform::PictureBox picHistory;
    platform::ComboBox cmbMeasurement;  // by date and time, the newest first
    platform::TextBox txtMeasurement;
    platform::Button cmdOK;
};

}  // namespace vantrel::correction
