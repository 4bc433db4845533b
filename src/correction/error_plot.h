// The plot of the plates' declination errors over their right ascensions.
#pragma once

#include "engine/ports.h"
#include "platform/drawing.h"

namespace vantrel::correction {

/// From the smallest to the largest value.
struct Extent {
    double least = 0, greatest = 0;

    double span() const { return greatest - least; }
    double middle() const { return (least + greatest) / 2; }
};

/// Of right ascensions (hours in [0, 24]) and of declination errors (degrees).
Extent raExtent(const engine::PerPlate& plateRAs);
Extent decExtent(const engine::PerPlate& decErrors);

/// Hours to the right, degrees upwards, a dot for each plate. Empty when the plates' errors, or their right
/// ascensions, don't differ: there is no scale to draw them on.
platform::Drawing errorPlot(const engine::PerPlate& plateRAs, const engine::PerPlate& decErrors);

}  // namespace vantrel::correction
