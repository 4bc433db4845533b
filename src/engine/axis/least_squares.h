// The estimate from all that is known: a rotation about a fixed axis, fitted by weighted least squares to the
// plates' centres and position angles and to the mount's hour angles, in the sky that the air shows.
// docs/estimate.md describes the method.
#pragma once

#include <span>

#include "engine/axis/axis_estimate.h"
#include "engine/axis/fit_settings.h"

namespace vantrel::engine {

/// Takes three plates or more; two when roll or readings are there. Every hour angle, declination and
/// latitude will do. Plates without a position angle or a reading may be among others.
class LeastSquares : public AxisEstimator {
  public:
    explicit LeastSquares(const FitSettings& settings = {}) : settings_(settings) {}

    AxisEstimate estimate(std::span<const Plate> plates, const Site& site) const override;

  private:
    FitSettings settings_;
};

}  // namespace vantrel::engine
