#include "platesolve/frm_pixel_scale.h"

#include <string>
#include <utility>
#include <vector>

namespace vantrel::platesolve {

frmPixelScale::frmPixelScale(platform::Screen& screen)
    : Form(screen, "frmPixelScale", "Pixel Scale Calculator", {160, 160, 380, 260}),
      txtFL(*this, "txtFL"),
      cmbUnits(*this, "cmbUnits"),
      txtPixelSizeX(*this, "txtPixelSizeX"),
      txtPixelSizeY(*this, "txtPixelSizeY"),
      cmbCamBin(*this, "cmbCamBin"),
      txtUnbinnedCCDScaleHoriz(*this, "txtUnbinnedCCDScaleHoriz", "1.0"),
      txtUnbinnedCCDScaleVert(*this, "txtUnbinnedCCDScaleVert", "1.0"),
      txtPlateScaleHoriz(*this, "txtPlateScaleHoriz", "3.0"),
      txtPlateScaleVert(*this, "txtPlateScaleVert", "3.0"),
      cmdCalculate(*this, "cmdCalculate", "Calculate"),
      mnuExit(*this, "mnuExit", "Exit") {
    for (const char* unit : {"in", "mm"}) cmbUnits.addItem(unit);
    cmbUnits.setText("mm");
    offerBinnings(kUsualBinnings);
    cmbCamBin.setText("3");
}

void frmPixelScale::offerBinnings(int greatest) {
    std::vector<platform::ComboBox::Item> binnings;
    for (int binning = 1; binning <= greatest; ++binning) binnings.push_back({std::to_string(binning)});
    cmbCamBin.setItems(std::move(binnings));
}

}  // namespace vantrel::platesolve
