// Exposures by hand: single or in a series, with a cross hair if wanted, and one exposure with a plate solve.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "engine/exposure_panel.h"
#include "engine/indicators.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "engine/services.h"

namespace vantrel::engine {

class ManualExposures {
  public:
    ManualExposures(ExposurePanel& panel, RunPanel& run, RunState& state, const Services& services,
                    OverlayPort& overlays);

    /// One short exposure that stays open in the imaging program; true when a stop was requested meanwhile.
    /// Throws OperationError when the exposure time isn't a number or the simulator fails.
    bool SimpleShortExpose();

    /// Starts an exposure or a series; while one runs, asks it to stop after its current pass.
    void cmdExpose_Click();
    void cmdExposeSolve_Click();

  private:
    void exposeSeries();
    bool exposeAndMark();
    void lockRunButtons();
    void endSeries();
    void acquire(const platform::TextBox& seconds);
    platform::Words exposeAndSolve();
    std::optional<PlateSolution> solve();
    bool exposeShort();
    void reportError(const char* label);

    ExposurePanel& panel_;
    RunPanel& run_;
    RunState& state_;
    Services services_;
    OverlayPort& overlays_;
    Indicators indicators_;
    bool stopSeries_ = false;
    std::array<bool, 4> enabledBefore_{};  // Run, Stop, Next and Skip when the series began
};

}  // namespace vantrel::engine
