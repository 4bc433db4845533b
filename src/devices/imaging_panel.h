// The main form's choice of the imaging program.
#pragma once

#include "platform/form.h"

namespace vantrel::devices {

struct ImagingPanel {
    explicit ImagingPanel(platform::Form& form)
        : frmImagingSW(form, "frmImagingSW", "Imaging SW"),
          optCCDSoft(form, programs, "optImagingSoftware(0)", "CCDSoft"),
          optMaxIm(form, programs, "optImagingSoftware(1)", "MaxIm DL"),
          optBuiltIn(form, programs, "optImagingSoftware(2)", "Built-in camera program"),
          chkUseCCDSoftSubFrame(form, "chkUseCCDSoftSubFrame", "Use CCDSoft sub-frame"),
          cmdCamera(form, "cmdCamera", "Camera..."),
          cmdDevices(form, "cmdDevices", "Devices...") {}

    platform::Frame frmImagingSW;
    platform::OptionGroup programs;
    platform::OptionButton optCCDSoft, optMaxIm, optBuiltIn;
    platform::CheckBox chkUseCCDSoftSubFrame;
    platform::Button cmdCamera;   // of the built-in camera program
    platform::Button cmdDevices;  // where real mounts and cameras are looked for
};

}  // namespace vantrel::devices
