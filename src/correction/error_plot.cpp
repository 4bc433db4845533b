#include "correction/error_plot.h"

#include <algorithm>

namespace vantrel::correction {

using namespace platform;

namespace {

Extent extent(const engine::PerPlate& values, Extent start) {
    for (const double value : values) {
        start.least = std::min(start.least, value);
        start.greatest = std::max(start.greatest, value);
    }
    return start;
}

}  // namespace

Extent raExtent(const engine::PerPlate& plateRAs) { return extent(plateRAs, {24, 0}); }

Extent decExtent(const engine::PerPlate& decErrors) { return extent(decErrors, {180, -180}); }

Drawing errorPlot(const engine::PerPlate& plateRAs, const engine::PerPlate& decErrors) {
    const Extent ra = raExtent(plateRAs);
    const Extent dec = decExtent(decErrors);
    if (dec.span() == 0 || ra.span() == 0) return {};

    const double raMargin = ra.span() / 20;
    const double decMargin = dec.span() / 20;
    Drawing drawing;
    drawing.scale = {.left = ra.least - raMargin,
                     .top = dec.greatest + decMargin,
                     .right = ra.greatest + raMargin,
                     .bottom = dec.least - decMargin};
    drawing.shapes.push_back(Line{.x1 = ra.least, .y1 = dec.middle(), .x2 = ra.greatest, .y2 = dec.middle()});
    for (std::size_t plate = 0; plate < plateRAs.size(); ++plate)
        drawing.shapes.push_back(
            Circle{.x = plateRAs[plate], .y = decErrors[plate], .radius = ra.span() / 40, .filled = true});
    return drawing;
}

}  // namespace vantrel::correction
