#include "engine/axis/air.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {
namespace {

constexpr double kFreezing = 273.15;  // kelvin

}  // namespace

Air standardAir(double height) {
    constexpr double kLapse = 0.0065;       // kelvin a metre
    constexpr double kExponent = 5.255877;  // of the barometric formula
    const double seaLevel = 15 + kFreezing;
    const double temperature = seaLevel - kLapse * std::clamp(height, -500.0, 11'000.0);
    return {.pressure = 1013.25 * std::pow(temperature / seaLevel, kExponent),
            .temperature = temperature - kFreezing};
}

AirLift::AirLift(const Air& air) {
    const double temperature = air.temperature + kFreezing;
    const double refractivity = 2.7782e-4 * (air.pressure / 1013.25) * ((15 + kFreezing) / temperature);
    const double scaleHeight = 0.001254 * temperature / kFreezing;  // of the air, in radii of the Earth
    a_ = radiansToDegrees(refractivity * (1 - scaleHeight));
    b_ = -radiansToDegrees(refractivity * (scaleHeight - refractivity / 2));
}

double AirLift::atObservedAltitude(double altitude) const {
    constexpr double kLowest = 3;  // degrees; see the header
    const double tangent = 1 / std::tan(degreesToRadians(std::max(altitude, kLowest)));
    return (a_ + b_ * tangent * tangent) * tangent;
}

double AirLift::atTrueAltitude(double altitude) const {
    // The lift changes by at most 0.1 for each degree of altitude, so every round gains a digit.
    double lift = 0;
    for (int round = 0; round < 14; ++round) lift = atObservedAltitude(altitude + lift);
    return lift;
}

}  // namespace vantrel::engine
