// Asks which of two installed imaging programs shall be used.
#pragma once

#include "platform/form.h"

namespace vantrel::devices {

class frmSelectCCSoftware : public platform::Form {
  public:
    explicit frmSelectCCSoftware(platform::Screen& screen)
        : Form(screen, "frmSelectCCSoftware", "Imaging Software", {200, 200, 340, 180}),
          lblQuestion(*this, "lblQuestion",
                      "Please select the Imaging Software that Vantrel will use to acquire images."),
          optMaxIm(*this, programs, "optMaxIm", "MaxIm DL/CCD"),
          optCCDSoft(*this, programs, "optCCDSoft", "CCDSoft"),
          cmdImagingSoftwareOK(*this, "cmdImagingSoftwareOK", "OK") {}

    platform::Label lblQuestion;
    platform::OptionGroup programs;
    platform::OptionButton optMaxIm, optCCDSoft;
    platform::Button cmdImagingSoftwareOK;
};

}  // namespace vantrel::devices
