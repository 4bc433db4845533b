// The polar plot's chart: the pole in the middle of rings, and a dot where the mount's axis points.
#pragma once

#include <span>
#include <vector>

#include "engine/axis/axis_estimate.h"
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

using Shapes = std::vector<platform::Shape>;

/// What the rings within the outermost stand for, at most three of them: arc-minutes, towards the upper
/// right.
Shapes ringFigures(const ChartRange& range);

/// The estimate: a cross, and the ellipse of one sigma unless it is smaller than the dot. Beyond the chart, a
/// line at its rim that points there. Nothing where there is no estimate.
Shapes estimateMarks(const ChartRange& range, const engine::AxisEstimate& estimate);

/// Both poles, named, where the chart is large enough to tell them apart: the true one in the middle, and
/// where the air shows it. In the southern hemisphere the chart has the axis's northern end, so that the
/// latter lies below.
Shapes poleMarks(const ChartRange& range, const engine::Site& site);

/// A ring around the pole of what is good enough; none where it lies beyond the chart or within the dot.
Shapes toleranceRing(const ChartRange& range, double arcMinutes);

/// Axes of before, in the order of time: dots that fade with age.
Shapes earlierDots(const ChartRange& range, std::span<const engine::PolarError> earlier,
                   platform::Color color);

}  // namespace vantrel::correction
