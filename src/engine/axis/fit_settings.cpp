#include "engine/axis/fit_settings.h"

#include <algorithm>
#include <cmath>

namespace vantrel::engine {

/// What moves a whole field is the air's tilt, 0.12" in a second; it averages out with the root of the time.
FitSettings fitSettingsFor(double exposureSeconds) {
    constexpr double kInASecond = 0.12;  // arc-seconds
    return {.centreFloor = kInASecond / std::sqrt(std::max(exposureSeconds, 1.0))};
}

}  // namespace vantrel::engine
