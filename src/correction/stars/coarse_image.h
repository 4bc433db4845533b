// A frame seen from afar, where stars far out of focus are as small as sharp ones are close by.
#pragma once

#include "platform/image_array.h"

namespace vantrel::correction {

/// How many pixels wide a coarse pixel is.
inline constexpr int kCoarse = 4;

/// The means of kCoarse × kCoarse pixels each, "not a number" where less than half of them have a value. What
/// is left over at the right and at the bottom is dropped.
platform::ImageArray coarseImage(const platform::ImageArray& image);

}  // namespace vantrel::correction
