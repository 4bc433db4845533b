// The "Pixel Scale Calculator" window.
#pragma once

#include "platform/form.h"

namespace vantrel::platesolve {

class frmPixelScale : public platform::Form {
  public:
    static constexpr int kUsualBinnings = 4;  // offered until the camera's are known

    explicit frmPixelScale(platform::Screen& screen);

    void offerBinnings(int greatest);

    platform::TextBox txtFL;
    platform::ComboBox cmbUnits;                     // of the focal length: "in" or "mm"
    platform::TextBox txtPixelSizeX, txtPixelSizeY;  // micrometres, unbinned
    platform::ComboBox cmbCamBin;                    // "1" to "4", or what the camera takes
    platform::TextBox txtUnbinnedCCDScaleHoriz, txtUnbinnedCCDScaleVert;  // arc-seconds per pixel
    platform::TextBox txtPlateScaleHoriz, txtPlateScaleVert;              // arc-seconds per binned pixel
    platform::Button cmdCalculate;
    platform::MenuItem mnuExit;
};

}  // namespace vantrel::platesolve
