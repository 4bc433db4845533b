// The first look at a star in full resolution.
#pragma once

#include <optional>

#include "correction/stars/pixel_grid.h"

namespace vantrel::correction {

struct StarSeed {
    double x = 0, y = 0;  // pixels of the grid
    double width = 0;     // diameter of what is at least half as bright as the middle, were it round
    double height = 0;    // of its light, smoothed
    // The sides of the rectangle that spreads as far as that, and where the longer one points to: radians,
    // from the direction of the columns' numbers towards that of the rows'.
    double length = 0, breadth = 0;
    double angle = 0;
};

/// Of the connected patches of star light, the one with most of it; in it, of the parts above half its
/// height, again the one with most light: two stars that touch are told apart there. Nothing when no patch
/// has four pixels.
std::optional<StarSeed> brightestSeed(const PixelGrid& light);

}  // namespace vantrel::correction
