#include "sky/refraction.h"

#include <algorithm>
#include <cmath>

#include <erfa.h>

#include "sky/vector3.h"

namespace vantrel::sky {

Refraction::Refraction(const AirState& air) {
    eraRefco(air.pressure, air.temperature, air.humidity, air.wavelength, &a_, &b_);
}

double Refraction::lift(double observedAltitude) const {
    constexpr double kLowest = 3;
    const double tangent = 1 / std::tan(std::max(observedAltitude, kLowest) * kDegree);
    return (a_ + b_ * tangent * tangent) * tangent / kDegree;
}

double Refraction::trueAltitude(double observedAltitude) const {
    return observedAltitude - lift(observedAltitude);
}

double Refraction::observedAltitude(double trueAltitude) const {
    // The lift changes by at most 0.1 for each degree of altitude, so every round gains a digit.
    double observed = trueAltitude;
    for (int round = 0; round < 14; ++round) observed = trueAltitude + lift(observed);
    return observed;
}

}  // namespace vantrel::sky
