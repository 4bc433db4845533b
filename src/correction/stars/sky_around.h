// The sky that a star stands on, as the ring of pixels around the star shows it.
#pragma once

#include "correction/stars/pixel_grid.h"

namespace vantrel::correction {

/// A plane, bent where a nebula's glow bends. In the image's units.
struct SkyAround {
    double level = 0, perColumn = 0, perRow = 0;  // at the star, and its slopes
    double bend = 0;                              // per square pixel of distance from the star
    double noise = 0;                             // of each pixel: standard deviation

    double at(double dx, double dy) const {
        return level + perColumn * dx + perRow * dy + bend * (dx * dx + dy * dy);
    }
};

/// The sky under a star at (x, y) from the pixels between two radii around it; other stars and wrong pixels
/// are left out, and what isn't a number. All zero when the ring holds too few pixels.
SkyAround skyAround(const PixelGrid& pixels, double x, double y, double innerRadius, double outerRadius);

/// Takes the sky under a star at (x, y) away.
void subtract(PixelGrid& pixels, const SkyAround& sky, double x, double y);

}  // namespace vantrel::correction
