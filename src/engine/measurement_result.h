// From the plates of a measurement to what the operator is told.
#pragma once

#include <span>

#include "engine/axis/axis_check.h"
#include "engine/polar_error.h"
#include "engine/services.h"
#include "engine/taken_plate.h"

namespace vantrel::engine {

class MeasurementResult {
  public:
    explicit MeasurementResult(const Services& services) : services_(services) {}

    /// Calculates the axis in both ways, says how good that is, shows it and keeps it in the history. What is
    /// shown, and given back, is the written calculation's result, or the least-squares estimate where the
    /// operator wants that. At least three plates; `exposureSeconds` were spent on each.
    PolarErrorResult of(std::span<const TakenPlate> plates, double exposureSeconds);

  private:
    void tell(const AxisCheck& check, const Site& site);
    PolarErrorResult solveForAxis(std::span<const TakenPlate> plates);
    void show(std::span<const TakenPlate> plates, const PolarError& error);
    void log(const std::string& text) { services_.log.AddToLog(text); }

    Services services_;
};

}  // namespace vantrel::engine
