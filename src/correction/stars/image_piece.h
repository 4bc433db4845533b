// Pieces of a frame.
#pragma once

#include "correction/stars/pixel_grid.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// The pixels in the box, which must lie inside the image, without the marks that were set in them.
inline platform::ImageArray pieceOf(const platform::ImageArray& image, const PixelBox& box) {
    const auto count = [](int length) { return static_cast<std::size_t>(length); };
    return image.untouched(count(box.left), count(box.top), count(box.width()), count(box.height()));
}

}  // namespace vantrel::correction
