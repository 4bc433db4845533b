// What of an image's light can be a star's: it stands out of the sky and isn't a single wrong pixel.
#pragma once

#include "correction/stars/pixel_grid.h"
#include "correction/stars/sky_level.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// The star light of every pixel in the box (inside the image), in the image's units; 0 where there is none.
/// A pixel counts as far as it stands out of the sky.
///
/// Light falls on neighbouring pixels too, even in the sharpest image: at least two of the four direct
/// neighbours of a star's brightest pixel have nearly a third of its height. A pixel counts no further than
/// its second brightest neighbour supports it, so that hot pixels and pairs of them vanish.
PixelGrid starLight(const platform::ImageArray& image, const SkyLevel& sky, const PixelBox& box);

/// The image's star light summed over squares of k × k pixels; what is left over at the right and at the
/// bottom is dropped. One pass over the pixels.
PixelGrid decimatedStarLight(const platform::ImageArray& image, const SkyLevel& sky, int k);

}  // namespace vantrel::correction
