#include "engine/axis/axis_position.h"

#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {

DirectionCosines northernEnd(const PolarError& written) {
    const double amplitude = degreesToRadians(written.ErrorAmplitude);
    const double angle = degreesToRadians(written.ErrorAngle);
    return {std::sin(amplitude) * std::cos(angle), std::sin(amplitude) * std::sin(angle),
            std::cos(amplitude)};
}

PolarError writtenError(const DirectionCosines& northernEnd) {
    const auto& [l, m, N] = northernEnd;
    const double angle = radiansToDegrees(std::atan2(m, l));
    return {.ErrorAmplitude = radiansToDegrees(std::atan2(std::hypot(l, m), N)),
            .ErrorAngle = angle < 0 ? angle + 360 : angle};
}

AxisOffset offsetFromPole(const DirectionCosines& northernEnd, double latitude, double poleAltitude) {
    const double hemisphere = latitude < 0 ? -1 : 1;
    const double phi = degreesToRadians(latitude);
    const auto& [l, m, N] = northernEnd;
    const double east = hemisphere * m;
    const double up = hemisphere * (std::cos(phi) * l + std::sin(phi) * N);
    const double polewards = std::cos(phi) * N - std::sin(phi) * l;  // horizontally
    return {.azimuth = 60 * radiansToDegrees(std::atan2(east, polewards)),
            .elevation = 60 * (radiansToDegrees(std::atan2(up, std::hypot(east, polewards))) - poleAltitude)};
}

double truePoleAltitude(const Site& site) { return std::abs(site.latitude); }

double refractedPoleAltitude(const Site& site) {
    const double altitude = truePoleAltitude(site);
    return altitude + AirLift(site.air).atTrueAltitude(altitude);
}

}  // namespace vantrel::engine
