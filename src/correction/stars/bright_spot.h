// Where in a working image most light is gathered.
#pragma once

#include "correction/stars/pixel_grid.h"

namespace vantrel::correction {

/// The square of `side` × `side` pixels within the box (smaller where the box is) that holds most light; the
/// first of several.
PixelBox brightestSpot(const PixelGrid& image, const PixelBox& within, int side);

}  // namespace vantrel::correction
