// Sidereal time from the computer's clock, for mounts that don't tell it.
#pragma once

#include "platform/clock.h"

namespace vantrel::platform {

/// Local mean sidereal time in hours, [0, 24), to a few milliseconds within a century of 2000 as far as the
/// clock keeps UT1. `utc`: the instant, UTC taken for UT1 (within 0.9 s). `longitude`: radians, east
/// positive. NaN when the longitude is not finite.
///
/// Meeus, Astronomical Algorithms (2nd ed.), equation 12.4: the IAU 1982 expression for Greenwich.
double localMeanSiderealTime(Instant utc, double longitude);

}  // namespace vantrel::platform
