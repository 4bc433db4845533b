// An estimate of where the mount's axis points, and of how good it is; and who makes one.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "engine/axis/axis_covariance.h"
#include "engine/axis/axis_position.h"
#include "engine/axis/plate.h"

namespace vantrel::engine {

enum class EstimateMethod { kWrittenCalculation, kLeastSquares };

enum class Validity {
    kValid,
    kUnusableInput,    // a number that isn't finite, or a covariance that can't be one
    kWrongNumber,      // of plates for the method
    kNoReadings,       // the method needs the mount's
    kAstrideSixHours,  // the written calculation with plates on both sides of ±6 h: the value is wrong
    kUndetermined,     // the plates don't tell: too close together, or all on the axis
    kNoSolution        // the calculation found none
};

/// Measured less modelled, in arc-seconds on the sky. `along` the plate's way towards the west, `across` it
/// towards the axis's northern end; `roll` by the position angle, `reading` by the mount's hour angle.
struct PlateResidual {
    double along = 0, across = 0;
    std::optional<double> roll{};
    std::optional<double> reading{};
};

/// Values mean something when the estimate is valid. The covariance is what follows from the plates' own
/// covariances: it isn't scaled by the scatter that is left.
struct AxisEstimate {
    EstimateMethod method = EstimateMethod::kLeastSquares;
    Validity validity = Validity::kNoSolution;

    PolarError written{};  // against the true pole; the offsets are 0 where the mount's readings don't tell
    AxisOffset fromTruePole{};
    AxisOffset fromRefractedPole{};  // where the air shows the pole
    std::optional<AxisCovariance> covariance{};

    std::vector<PlateResidual> residuals{};  // one a plate; none where nothing is left over
    double chiSquare = 0;
    int degreesOfFreedom = 0;

    bool valid() const { return validity == Validity::kValid; }
};

/// One way from plates to an axis.
class AxisEstimator {
  public:
    virtual ~AxisEstimator() = default;
    /// Never throws; what went wrong is the validity.
    virtual AxisEstimate estimate(std::span<const Plate> plates, const Site& site) const = 0;
};

}  // namespace vantrel::engine
