// How good a measurement will be, before the first slew.
#pragma once

#include <optional>
#include <vector>

#include "engine/axis/axis_estimate.h"
#include "engine/axis/fit_settings.h"

namespace vantrel::engine {

struct Plan {
    double hourAngle = 0;    // hours, of the first plate
    double declination = 0;  // degrees
    double slew = 20;        // degrees from plate to plate; positive: to the west
    /// One entry a plate: how many exposures it gets.
    std::vector<int> exposures{1, 1, 1};
    // Of a single exposure, arc-seconds.
    double centreSigma = 0.3;
    std::optional<double> rollSigma;  // none: no roll
    bool readings = true;             // the mount tells its hour angles
};

struct Prospect {
    Validity validity = Validity::kUnusableInput;
    AxisCovariance covariance;  // where valid
    int degreesOfFreedom = 0;
    double lowestAltitude = 0;     // degrees, of the plates
    bool astrideSixHours = false;  // the written calculation will be wrong
    /// Arc-seconds: a jump in declination of this size is found nine times out of ten, at whichever plate.
    /// None: a jump can't be told from another axis.
    std::optional<double> visibleJump;
};

/// By the estimate's own equations, for an axis at the pole. Floors don't shrink with the number of
/// exposures.
Prospect foresee(const Plan& plan, const Site& site, const FitSettings& settings = {});

}  // namespace vantrel::engine
