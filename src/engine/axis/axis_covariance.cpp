#include "engine/axis/axis_covariance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/angles.h"

namespace vantrel::engine {

ErrorEllipse AxisCovariance::ellipse() const {
    const double mean = (eastEast + upUp) / 2;
    const double half = std::hypot((eastEast - upUp) / 2, eastUp);
    const double direction = radiansToDegrees(std::atan2(2 * eastUp, upUp - eastEast)) / 2;
    return {std::sqrt(std::max(0.0, mean + half)), std::sqrt(std::max(0.0, mean - half)),
            direction < 0 ? direction + 180 : direction};
}

double AxisCovariance::sigma() const { return std::sqrt((eastEast + upUp) / 2); }

double AxisCovariance::chiSquareOf(double east, double up) const {
    const double determinant = eastEast * upUp - eastUp * eastUp;
    if (!(determinant > 0)) return std::numeric_limits<double>::infinity();
    return (east * east * upUp - 2 * east * up * eastUp + up * up * eastEast) / determinant;
}

}  // namespace vantrel::engine
