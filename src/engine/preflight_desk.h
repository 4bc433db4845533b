// What the operator is told before the first slew: the line beside the slew, the window with the sky's map,
// and the warnings when a run begins.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/axis/preflight.h"
#include "engine/frm_preflight.h"
#include "engine/measurement_plan.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "engine/services.h"
#include "engine/taken_plate.h"

namespace vantrel::engine {

/// Reads a file's text; nothing when it can't be read or is too large.
using ReadText = std::function<std::optional<std::string>(const std::string& path)>;

class PreflightDesk {
  public:
    PreflightDesk(frmPreflight& form, RunPanel& panel, RunState& state, const Services& services,
                  ReadText readText);

    /// A run begins here: logs what is to be expected, and warns.
    void announce(const HourAnglePosition& start, const MeasurementPlan& plan);

    /// How well a plate of this telescope and camera, of so many exposures, is known: for all forecasts from
    /// now on.
    void learn(const TakenPlate& plate, int exposures);

    /// From the figures as they stand, and where the mount pointed when it was asked last.
    void showProspect();

  private:
    void follow();
    void look();
    void show();
    void slewThere();
    Plan planAhead(const MeasurementPlan& plan) const;
    FitSettings fitSettings(const MeasurementPlan& plan) const;
    MeasurementPlan planAsTyped() const;
    Horizon horizon() const;
    std::optional<std::string> horizonText() const;
    void reportHorizon();
    void readSite(bool mountTells);

    frmPreflight& form_;
    RunPanel& panel_;
    RunState& state_;
    Services services_;
    ReadText readText_;

    HourAnglePosition start_{.ha = -1.5, .Dec = 30};  // some place, until a mount tells
    Site site_{.latitude = 45};
    double centreSigma_ = 0.15, rollSigma_ = 20;  // arc-seconds, of one exposure
    std::optional<StartingPlace> proposal_;
    std::vector<platform::Subscription> changes_;
};

}  // namespace vantrel::engine
