// The calculation of polar_error.h as one estimator among others.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "engine/axis/axis_estimate.h"
#include "engine/axis/fit_settings.h"

namespace vantrel::engine {

/// CalcPolarError of three plates with the mount's readings, unchanged; of more plates along an arc it takes
/// three (threeAlong). It knows no air, so that its axis is the one of a sky without refraction.
///
/// The covariance counts errors of the plates' centres and, the farther the axis is from the pole, of the
/// mount's readings, which the calculation takes for exact.
class WrittenCalculation : public AxisEstimator {
  public:
    explicit WrittenCalculation(const FitSettings& settings = {}) : settings_(settings) {}

    AxisEstimate estimate(std::span<const Plate> plates, const Site& site) const override;

  private:
    FitSettings settings_;
};

/// The first, the one nearest the middle of the arc, and the one farthest from the first, by hour angles
/// (hours). At least three.
std::array<std::size_t, 3> threeAlong(std::span<const double> hourAngles);

/// Whether some of these hour angles (hours) lie within six hours of the meridian and others beyond. The
/// calculation takes the cosine of every hour angle for positive; it is right where the true signs are all
/// the same, and wrong without telling where they aren't.
bool astrideSixHours(std::span<const double> hourAngles);

}  // namespace vantrel::engine
