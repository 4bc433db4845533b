#include "engine/axis/plate.h"

#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {

bool isFinite(const Plate& plate) {
    const PlateCovariance& c = plate.covariance;
    double sum = plate.hourAngle + plate.declination + plate.positionAngle.value_or(0) + c.eastEast +
                 c.eastNorth + c.northNorth + c.rollRoll + c.eastRoll + c.northRoll;
    if (plate.reading) sum += plate.reading->hourAngle + plate.reading->declination;
    return std::isfinite(sum);
}

double positionAngleOfRows(double CD1_1, double CD1_2, double CD2_1, double CD2_2) {
    // The nearest rotation, after columns were mirrored where the image is: its rows lie at `turn` from east
    // towards north.
    const double hand = CD1_1 * CD2_2 - CD1_2 * CD2_1 < 0 ? -1 : 1;
    const double turn = std::atan2(CD2_1 - hand * CD1_2, CD1_1 + hand * CD2_2);
    const double angle = 90 - radiansToDegrees(turn);
    return angle > 180 ? angle - 360 : angle;
}

std::optional<PlateCovariance> covarianceOf(const SolutionErrors& errors) {
    const auto known = [](double sigma) { return std::isfinite(sigma) && sigma > 0; };
    if (!known(errors.centre) || !known(errors.roll)) return std::nullopt;
    return PlateCovariance::ofSigmas(errors.centre, errors.roll);
}

std::optional<PlateCovariance> covarianceOf(const SolutionQuality& quality) {
    const double coefficients = (quality.order + 1) * (quality.order + 2) / 2.0;
    const double spare = quality.matched - coefficients;
    const bool hasField = quality.fieldWidth > 0 && quality.fieldHeight > 0;
    if (!(spare > 0) || !hasField || !(quality.meanResidual > 0)) return std::nullopt;

    // The mean length of a vector of two normal errors is √(π/2) of one; the model took its share of them.
    const double variance = quality.meanResidual * quality.meanResidual * (2 / kPi) / spare;

    // In Legendre polynomials, which are orthogonal over the field, the model's value in the middle has the
    // variance Σ (2i + 1)(2j + 1) P_i(0)² P_j(0)² of one star divided by their number, its slopes the same
    // with P'(0) for one factor. Even orders count for the value, odd ones for the slope.
    const double ofValue = quality.order >= 2 ? 3.5 : 1;
    const double ofSlope = quality.order >= 3 ? 22.5 : 3;
    const double halfWidth = degreesToRadians(quality.fieldWidth) / 2;
    const double halfHeight = degreesToRadians(quality.fieldHeight) / 2;
    const double ofRoll = ofSlope / 4 * (1 / (halfWidth * halfWidth) + 1 / (halfHeight * halfHeight));
    return PlateCovariance::ofSigmas(std::sqrt(variance * ofValue), std::sqrt(variance * ofRoll));
}

}  // namespace vantrel::engine
