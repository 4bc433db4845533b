// Where an axis points, and the one sign convention for it.
//
// We speak of the axis's end near the pole that is above the horizon (the northern one at latitude 0). In
// both hemispheres azimuth is positive when that end lies east of the pole, elevation when it lies above it:
// a positive error is corrected by moving west and down. On the sky, east and up are directions at that end.
//
// The written convention (PolarError) always speaks of the northern end against the north pole of date:
// amplitude, and angle counter-clockwise from up.
#pragma once

#include "engine/axis/air.h"
#include "engine/polar_error.h"
#include "engine/sky_geometry.h"

namespace vantrel::engine {

struct Site {
    double latitude = 0;  // degrees, north positive
    Air air{};
};

struct AxisOffset {
    double azimuth = 0;    // arc-minutes about the vertical; positive: the axis lies east of the pole
    double elevation = 0;  // arc-minutes; positive: above
};

/// The northern end by the written convention, and back; the offsets that it doesn't speak of are 0.
DirectionCosines northernEnd(const PolarError& written);
PolarError writtenError(const DirectionCosines& northernEnd);

/// Against a pole whose altitude above the horizon is `poleAltitude` degrees; the latitude tells which pole.
AxisOffset offsetFromPole(const DirectionCosines& northernEnd, double latitude, double poleAltitude);

/// Altitude (degrees) of the pole above the horizon: where it is, and where the air shows it.
double truePoleAltitude(const Site& site);
double refractedPoleAltitude(const Site& site);

}  // namespace vantrel::engine
