// The calculation of polar_error.h as one estimator among others.
#pragma once

#include <span>

#include "engine/axis/axis_estimate.h"

namespace vantrel::engine {

/// CalcPolarError of three plates with the mount's readings, unchanged. It knows no air, so that its axis is
/// the one of a sky without refraction; the covariance is that of an axis through three points.
class WrittenCalculation : public AxisEstimator {
  public:
    AxisEstimate estimate(std::span<const Plate> plates, const Site& site) const override;
};

/// Whether some of these hour angles (hours) lie within six hours of the meridian and others beyond. The
/// calculation takes the cosine of every hour angle for positive; it is right where the true signs are all
/// the same, and wrong without telling where they aren't.
bool astrideSixHours(std::span<const double> hourAngles);

}  // namespace vantrel::engine
