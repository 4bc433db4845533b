// From the plates of a measurement to what the operator is told.
#pragma once

#include <span>
#include <string>

#include "engine/axis/axis_check.h"
#include "engine/polar_error.h"
#include "engine/services.h"
#include "engine/taken_plate.h"

namespace vantrel::engine {

/// What a measurement came to.
struct MeasuredAxis {
    PolarErrorResult shown;  // what the window shows and the correction works with
    AxisCheck check;
    std::string verdict;  // whether it may be believed: warnings, or that the plates agree
};

class MeasurementResult {
  public:
    explicit MeasurementResult(const Services& services) : services_(services) {}

    struct Wish {
        double exposureSeconds = 0;  // spent on each plate
        bool leastSquares = false;   // shall count instead of the written calculation, if it is valid
        std::string note{};          // for the history: what is different from the first calculation
    };

    /// Calculates the axis in both ways, says how good that is, shows it and keeps it in the history. At
    /// least three plates, in the order of the arc.
    MeasuredAxis of(std::span<const TakenPlate> plates, const Wish& wish);

  private:
    std::string tell(const AxisCheck& check, const Site& site);
    PolarErrorResult solveForAxis(std::span<const TakenPlate> plates);
    void show(std::span<const TakenPlate> plates, const PolarError& error);
    void log(const std::string& text) { services_.log.AddToLog(text); }

    Services services_;
};

}  // namespace vantrel::engine
