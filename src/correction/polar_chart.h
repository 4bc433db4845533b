// The polar plot's chart: the pole in the middle of rings, and a dot where the mount's axis points.
#pragma once

#include "platform/color.h"
#include "platform/drawing.h"

namespace vantrel::correction {

/// What the rings stand for.
struct ChartRange {
    int rings = 1;
    int step = 1;  // arc-minutes from ring to ring

    int radius() const { return rings * step; }
};

/// The chart on which a distance from the pole (arc-minutes) lies: steps of 1, 10 or 100, and always a ring
/// beyond.
ChartRange chartRange(double arcMinutes);

/// The drawing for an axis at this distance (arc-minutes) and direction (degrees from up towards east). Up is
/// at positive y, east at positive x; a ring's step is 0.8 units.
platform::Drawing polarChart(double arcMinutes, double angle, platform::Color dotColor);

}  // namespace vantrel::correction
