// What goes wrong in a real mount and telescope, and how each fault moves where the camera truly points.
// The mount's own readings know nothing of any of it. All faults are off at 0.
#pragma once

#include "observatory/telescopes/mount_axis.h"

namespace vantrel::observatory {

struct MountFaults {
    /// Arcsec, one sigma: by how much the camera's roll scatters from slew to slew.
    double rollNoise = 0;
    /// Arcsec that the tube sags by when it lies level: see sagging().
    double flexure = 0;
    /// Arcsec, amplitude of the worm's error in hour angle, and the seconds that a turn of the worm takes at
    /// the sidereal rate.
    double periodicError = 0;
    double wormPeriod = 480;
    /// Seconds that the mount's clock, and with it its sidereal time, is ahead of the sky's.
    double clockError = 0;
};

/// A mirror that flops, or a clutch that slips: from so manieth slew on (1 is the next) the telescope points
/// so many arcsec higher in the mount's declination.
struct DeclinationJump {
    double amount = 0;
    int slew = 1;
};

/// Arcsec by which the mount's true hour angle exceeds the one that the polar axis is turned to (degrees).
/// The worm's phase is 0 at hour angle 0.
double periodicError(const MountFaults& faults, double hourAngle);

/// The camera turned about its line of sight (arcsec), right-handed, so that its position angle falls.
TubeAttitude rolled(const TubeAttitude& pointing, double roll);

/// How far the camera twists in its focuser, for each arcsec that the tube sags by. The weight that bends the
/// focuser sideways hangs beside it, on the side of greater declination: what moves the image by f times the
/// sag turns the camera by that over the weight's lever, a seventh of the focal length.
inline constexpr double kTwistOfSag = 7;

/// The tube bent by gravity. It droops by flexure times the cosine of its altitude, about a level axis; and
/// the camera twists by the part of gravity that pulls towards the mount's west: kTwistOfSag times flexure
/// times the cosine of latitude times the sine of the hour angle, where the mount is aligned. Latitude in
/// degrees, flexure in arcsec.
TubeAttitude sagging(const TubeAttitude& pointing, double flexure, double latitude);

}  // namespace vantrel::observatory
