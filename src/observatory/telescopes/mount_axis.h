// Where a misaligned mount's axis points, and with it everything the mount carries.
//
// The local equatorial frame: x towards hour angle 0 on the equator, y towards hour angle 18h (east), z
// towards the north celestial pole of date. A mount whose axis is perfect counts its own hour angle and
// declination in this frame; an error turns the frame that the mount counts in.
#pragma once

#include "sky/vector3.h"

namespace vantrel::observatory {

/// The axis against the celestial pole of date that is above the horizon (the northern at latitude 0).
struct AxisError {
    /// Arc-minutes of azimuth, an angle about the vertical. Positive: the axis lies east of the pole, in both
    /// hemispheres. At latitude 60 one degree of azimuth moves the axis by half a degree of sky.
    double azimuth = 0;
    /// Arc-minutes of altitude. Positive: the axis points above the pole, in both hemispheres.
    double elevation = 0;
};

/// Turns mount directions into true ones: first the elevation adjuster's turn about the east-west line, then
/// the azimuth adjuster's about the vertical, as the hinges of a real mount stand. Latitude in degrees.
sky::Matrix3 mountToSky(const AxisError& error, double latitude);

/// Direction at an hour angle and a declination, both in degrees; declinations beyond 90 lead over the pole.
sky::Vector3 hourAngleDirection(double hourAngle, double declination);

struct HaDec {
    double hourAngle = 0;    // degrees, (-180, 180]
    double declination = 0;  // degrees
};
HaDec haDecOf(const sky::Vector3& direction);

struct AltAz {
    double altitude = 0;  // degrees
    double azimuth = 0;   // degrees from north through east, [0, 360)
};
AltAz altAzOf(const sky::Vector3& direction, double latitude);

/// Where the tube truly points, in the local equatorial frame: unit vectors at right angles.
struct TubeAttitude {
    sky::Vector3 ahead;
    sky::Vector3 up;    // towards greater mount declination
    sky::Vector3 east;  // towards greater right ascension of the mount
};

/// Rotation about a unit vector, right-handed (Rodrigues); radians.
sky::Matrix3 rotation(const sky::Vector3& axis, double angle);

/// The whole tube turned so.
TubeAttitude turned(const TubeAttitude& pointing, const sky::Vector3& axis, double angle);

/// Directions of the zenith and of the horizon's north point in the local equatorial frame.
sky::Vector3 zenith(double latitude);
sky::Vector3 northPoint(double latitude);

}  // namespace vantrel::observatory
