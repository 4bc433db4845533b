// Where along one axis of the working image the star is: which of its stripes stand out, and how much.
#pragma once

#include <vector>

#include "correction/stars/pixel_grid.h"

namespace vantrel::correction {

/// The stripes along one dimension: `count` of them, `size` pixels each, from pixel `offset` on.
struct StripeGrid {
    int size = 0;
    int count = 0;
    int offset = 0;

    /// The pixels from `margin` stripes before the middle of stripe `first` to as many after that of `last`.
    struct Range {
        int from = 0, to = 0;  // both included
    };
    Range window(int first, int last, double margin) const;
    /// The stripe that holds this pixel, or the nearest one.
    int stripeOf(int pixel) const;
};

/// Stripes as wide as a twentieth of the longer side, the same along both.
int stripeSize(int width, int height);
StripeGrid centredGrid(int pixels, int size);

enum class StripeDirection { kColumns, kRows };

struct StandingOut {
    int first = 0, last = 0;  // stripes
    double significance = 0;
    int withoutPeak = 0;  // stripes whose profile is too short to have a peak
};

/// Stripes of the grid, each summed into a profile over the pixels of `range` of the other dimension and
/// reduced to its peak. The stripe that holds the brightest spot of `spot` × `spot` pixels stands out, and
/// its neighbours for as long as they have half its peak.
///
/// The significance says how far the highest peak lies above the darkest stripe, as the line fitted through
/// the lower half of the sorted peaks has it, in units of `noise`: what sky without stars may leave of a
/// peak. The other stars' scatter is no part of it, or a rich field would hide its brightest star. 1000 when
/// fewer than three stripes lie below the highest, or there is no noise; 0 when no stripe has a peak. Throws
/// the run-time failure 9 when the grid has no stripes.
StandingOut searchStripes(const PixelGrid& image, StripeDirection direction, const StripeGrid& grid,
                          const StripeGrid::Range& range, int spot, double noise);

}  // namespace vantrel::correction
