// Where a star would stand if the mount's axis were corrected in one direction.
#pragma once

#include <string>
#include <vector>

#include "engine/sky_geometry.h"

namespace vantrel::correction {

/// What a pointing starts from. Hours for right ascension and sidereal time, else degrees; the plate position
/// is the solved image centre, the telescope position what the mount read.
struct PointingSituation {
    double ErrorAmplitude = 0, ErrorAngle = 0;
    double telescopeRA = 0, telescopeDec = 0;
    double latitude = 0;
    double lst = 0;
    double plateRA = 0, plateDec = 0;
};

/// The correction's aim. The two offsets are what the mount is off beside its axis error: model less
/// telescope in right ascension (hours in [0, 24)), telescope less model in declination (degrees).
struct CorrectionTarget {
    engine::EquatorialPosition moveTo;  // where the star must go; hours (not reduced for azimuth) and degrees
    engine::EquatorialPosition scope;   // where the misaligned mount must point to see that place
    double raOffset = 0;
    double decOffset = 0;
    std::vector<std::string> log;  // every intermediate value, for the operator's log
};

/// Turned about the vertical by the axis's azimuth error.
CorrectionTarget azimuthTarget(const PointingSituation& situation);

/// Turned about the east-west line by what is left of the error once the azimuth is right.
CorrectionTarget elevationTarget(const PointingSituation& situation);

}  // namespace vantrel::correction
