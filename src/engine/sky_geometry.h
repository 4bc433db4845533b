// Positions on the sky as unit vectors, and the transformations between the frames that an alignment needs.
//
// Frames. Equatorial: hour angle (hours, west positive) and declination (degrees). Horizon: altitude and
// azimuth (degrees), azimuth counted from south through west: south 0, west 90, north 180, east 270. Both map
// to the same vector: of the hour angle (or azimuth / 15) and the declination (or altitude).
#pragma once

#include <array>

namespace vantrel::engine {

/// l: hour angle 0 on the equator (the meridian); m: hour angle 18 h (east); N: the celestial pole.
struct DirectionCosines {
    double l = 0, m = 0, N = 0;
};

struct HourAnglePosition {
    double ha = 0;   // hours
    double Dec = 0;  // degrees
};

struct HorizonPosition {
    double Alt = 0;  // degrees
    double Az = 0;   // degrees, from south through west
};

struct EquatorialPosition {
    double RA = 0;   // hours
    double Dec = 0;  // degrees
};

DirectionCosines GetDirectionCosines(double ha, double Dec);

/// Degrees between two positions.
double separation(const HourAnglePosition& a, const HourAnglePosition& b);

using Row = std::array<double, 3>;
using Matrix = std::array<Row, 3>;

/// Of the rows, by the rule of Sarrus.
double Determinant(const Matrix& rows);

/// The solution of rows · x = rightHandSide by Cramer's rule; zeros when the determinant is exactly 0.
Row Solve3Equations(const Matrix& rows, const Row& rightHandSide);

/// Latitude in degrees, north positive. A position exactly on the meridian (m = 0) gets azimuth 180, also
/// south of the zenith.
HorizonPosition EquatorialToAltAz(double ha, double Dec, double Latitude);

/// The inverse, except for that azimuth; the hour angle is in (-12, 12].
HourAnglePosition AltAzToEquatorial(double Alt, double Az, double Latitude);

/// Where a mount whose axis is displaced by this error (degrees; angle counter-clockwise from up) must point
/// to see a sky position (hours, degrees).
EquatorialPosition TransformCoordinatesFromSkyToScope(double SkyRA, double SkyDec, double LocalSiderealTime,
                                                      double ErrorAmplitude, double ErrorAngle);

}  // namespace vantrel::engine
