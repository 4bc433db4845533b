// The Log window.
#pragma once

#include "platform/form.h"

namespace vantrel::app {

class frmLog : public platform::Form {
  public:
    explicit frmLog(platform::Screen& screen)
        : Form(screen, "frmLog", "Log", {830, 60, 520, 420}),
          txtLog(*this, "txtLog"),
          mnuClear(*this, "mnuClear", "Clear"),
          mnuClose(*this, "mnuClose", "Close"),
          mnuOnTop(*this, "mnuOnTop", "OnTop") {
        txtLog.setReadOnly(true);
    }

    platform::TextBox txtLog;
    platform::MenuItem mnuClear, mnuClose, mnuOnTop;
};

}  // namespace vantrel::app
