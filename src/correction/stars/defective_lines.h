// Columns and rows of a sensor that show more or less than they ought to.
#pragma once

#include "correction/stars/sky_level.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// The image with its defective columns and rows filled in from what lies to both sides of them; the very
/// same image when there are none.
///
/// A line is defective where most of its pixels lie above what is beside it (lines an even number of lines
/// away, which have its own colour on a colour sensor), or below, for the whole of the frame or for a part of
/// it that is longer than a star covers: about 80 pixels, an eighth of a larger frame. It ends from one pixel
/// to the next, as no light does: tracks along a column stay. Up to five lines side by side are found.
platform::ImageArray withoutDefectiveLines(const platform::ImageArray& image, const SkyLevel& sky);

}  // namespace vantrel::correction
