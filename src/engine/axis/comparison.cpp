#include "engine/axis/comparison.h"

#include <cmath>

#include "engine/angles.h"
#include "engine/axis/chi_square.h"

namespace vantrel::engine {

std::optional<AxisDifference> differenceOf(const AxisEstimate& first, const AxisEstimate& second,
                                           const Site& site) {
    if (!first.valid() || !second.valid() || !first.covariance || !second.covariance) return std::nullopt;
    const double altitude = truePoleAltitude(site) + first.fromTruePole.elevation / 60;
    const double azimuth = std::remainder(second.fromTruePole.azimuth - first.fromTruePole.azimuth, 360 * 60);
    AxisDifference difference{.east = azimuth * 60 * std::cos(degreesToRadians(altitude)),
                              .up = (second.fromTruePole.elevation - first.fromTruePole.elevation) * 60};
    difference.distance = std::hypot(difference.east, difference.up);
    difference.chiSquare =
        (*first.covariance + *second.covariance).chiSquareOf(difference.east, difference.up);
    difference.chance = chiSquareTail(difference.chiSquare, 2);
    constexpr double kThreeSigmas = 0.0027;  // chance of more by chance
    difference.differs = difference.chance < kThreeSigmas;
    return difference;
}

}  // namespace vantrel::engine
