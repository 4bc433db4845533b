// Works out the image scale from the telescope's focal length, the camera's pixels and its binning.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "engine/ports.h"
#include "platesolve/frm_pixel_scale.h"
#include "platesolve/plate_solve_panel.h"

namespace vantrel::platesolve {

class ScaleCalculator {
  public:
    /// The greatest binning of the camera in use; nothing while that isn't known.
    using GreatestBinning = std::function<std::optional<int>()>;

    ScaleCalculator(frmPixelScale& window, PlateSolvePanel& panel, engine::SettingsPort& settings,
                    engine::LogPort& log, GreatestBinning greatestBinning);

    /// Shows the scale of what the boxes hold by now, if the window is open. Every box that takes numbers
    /// stays as the operator left it: he may be typing.
    void recompute();

  private:
    struct Scale {
        double focalLength;           // millimetres
        double horizontal, vertical;  // arc-seconds per binned pixel
        bool operator==(const Scale&) const = default;
    };
    /// Nothing as long as a number is missing or not positive.
    std::optional<Scale> scaleOfInputs() const;
    void show(const Scale& scale);

    void offerBinnings();

    void cmdGetImageScale_Click();
    void Form_Load();
    void cmdCalculate_Click();
    void store(const char* key, const std::string& value);

    frmPixelScale& window_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    GreatestBinning greatestBinning_;
    std::optional<int> greatestShown_;  // whose choice the list of binnings is
    std::optional<Scale> shown_;        // since the window was opened
};

}  // namespace vantrel::platesolve
