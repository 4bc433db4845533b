// The about box.
#pragma once

#include "platform/form.h"

namespace vantrel::app {

class frmAbout : public platform::Form {
  public:
    explicit frmAbout(platform::Screen& screen);

    platform::Label lblVersion, lblDescription, lblDisclaimer;
    platform::Button cmdSysInfo, cmdOK;
};

}  // namespace vantrel::app
