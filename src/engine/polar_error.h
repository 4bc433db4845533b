// From three plates at three hour angles to where the mount's axis points.
#pragma once

#include <array>

namespace vantrel::engine {

struct PolarError {
    double ErrorAmplitude = 0;  // degrees between the mount's axis and the celestial pole
    double ErrorAngle = 0;      // degrees in [0, 360), counter-clockwise from "up" as seen at the pole
    double OffsetRA = 0;        // hours in (-12, 12]: mount hour angle less true hour angle
    double OffsetDec = 0;       // degrees: reported less true declination of the mount
};

/// One plate: where it truly lies, and which hour angle the mount showed.
struct PlatePosition {
    double HA = 0;       // hours, of the solved centre
    double Dec = 0;      // degrees, of the solved centre
    double ScopeHA = 0;  // hours, in the mount's own coordinates
};

/// What came of the calculation. Without a valid solution amplitude, angle and OffsetDec are 0; OffsetRA is
/// kept. The other figures are what the log shows of a valid one.
struct PolarErrorResult {
    PolarError error;
    bool BadSolution = false;
    double A = 0, C = 0;  // components of the pole in mount coordinates
    double Theta = 0;     // radians
    double Gamma = 0;     // radians
};

/// The mount moved in hour angle only, its reported declination being `ScopeDec` (degrees). A square root of
/// a negative number is the run-time failure 5.
///
/// The fit of the declinations uses the positive root of 1 - sin² for the cosine of the hour angle, so plates
/// on both sides of ±6 h from the meridian give a bad or wrong solution.
PolarErrorResult CalcPolarError(const std::array<PlatePosition, 3>& plates, double ScopeDec);

}  // namespace vantrel::engine
