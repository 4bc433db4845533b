// Whether two estimates of an axis say the same.
#pragma once

#include <optional>

#include "engine/axis/axis_estimate.h"

namespace vantrel::engine {

struct AxisDifference {
    double east = 0, up = 0;  // arc-seconds on the sky, second less first
    double distance = 0;      // arc-seconds
    double chiSquare = 0;     // by both covariances together, with two degrees of freedom
    double chance = 0;        // that two measurements of one axis differ so much
    bool differs = false;     // the chance is below that of three sigmas, 0.27 %
};

/// Of two estimates from plates of their own. From the same plates the covariances count errors twice that
/// both share, and too little differs. Empty unless both are valid and know their covariance.
std::optional<AxisDifference> differenceOf(const AxisEstimate& first, const AxisEstimate& second,
                                           const Site& site);

}  // namespace vantrel::engine
