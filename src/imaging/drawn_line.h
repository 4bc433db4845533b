// Tells what a program drew into an image from what stands in the sky.
#pragma once

#include "platform/image_array.h"

namespace vantrel::imaging {

/// True when what is at the point, in pixels, goes on to two opposite sides with at least this brightness and
/// nowhere else: a line of any direction, or lines that cross. `size` is the diameter of the star that it
/// would have to be.
bool isDrawnLine(const platform::ImageArray& image, double x, double y, double size, double brightness);

}  // namespace vantrel::imaging
