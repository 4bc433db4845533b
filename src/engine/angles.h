// Angle helpers. Hours and degrees as the operator reads them; radians where it says so.
#pragma once

#include <cmath>
#include <string>

namespace vantrel::engine {

/// The π of every formula here: 14 decimals, a little less than the exact value.
inline constexpr double kPi = 3.14159265358979;

inline constexpr double degreesToRadians(double degrees) { return degrees * kPi / 180; }
inline constexpr double radiansToDegrees(double radians) { return radians * 180 / kPi; }
inline constexpr double hoursToRadians(double hours) { return hours * kPi / 12; }
inline constexpr double radiansToHours(double radians) { return radians * 12 / kPi; }

/// Hours brought into [0, 24) by whole days; hours within that range come back unchanged. A negative whole
/// number of days gives 24. Run-time failure 6 (overflow) beyond 32,767 days.
double NormalizeRAHours(double hours);

/// NormalizeRAHours, less a day above 12: hours in (-12, 12].
double signedHours(double hours);

/// Radians brought into [-π, π] by whole turns.
inline double signedRadians(double angle) { return std::remainder(angle, 2 * kPi); }

/// An angle to be read: "24″" below one arc-minute, "18.1'", "2.4°" from 120 arc-minutes on; without a sign.
std::string shortAngle(double arcMinutes);

/// Radians in [0, 2π) of the direction (x, y). On the x axis (y = 0) the result is 0, whatever x is.
double ArcTan2(double y, double x);

/// Radians; arguments beyond ±1 count as ±1.
double ArcSin(double x);
double ArcCos(double x);

}  // namespace vantrel::engine
