// Works out the image scale from the telescope's focal length, the camera's pixels and its binning.
#pragma once

#include "engine/ports.h"
#include "platesolve/frm_pixel_scale.h"
#include "platesolve/plate_solve_panel.h"

namespace vantrel::platesolve {

class ScaleCalculator {
  public:
    ScaleCalculator(frmPixelScale& window, PlateSolvePanel& panel, engine::SettingsPort& settings);

  private:
    void cmdGetImageScale_Click();
    void Form_Load();
    void cmdCalculate_Click();
    void store(const char* key, const std::string& value);

    frmPixelScale& window_;
    engine::SettingsPort& settings_;
};

}  // namespace vantrel::platesolve
