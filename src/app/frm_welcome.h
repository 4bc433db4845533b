// The window that a first start opens with: three ways to begin.
#pragma once

#include "platform/form.h"

namespace vantrel::app {

class frmWelcome : public platform::Form {
  public:
    explicit frmWelcome(platform::Screen& screen);

    platform::Label lblWelcome;
    platform::Button cmdTrySimulator;
    platform::Label lblTrySimulator;
    platform::Button cmdMyDevices;
    platform::Label lblMyDevices;
    platform::Button cmdJustSolve;
    platform::Label lblJustSolve;
};

}  // namespace vantrel::app
