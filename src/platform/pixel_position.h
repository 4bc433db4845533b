// A place in an image.
#pragma once

namespace vantrel::platform {

/// Column and row in the image array, pixel centres at whole numbers from 0; row 0 comes first in the array.
struct PixelPosition {
    double x = 0;
    double y = 0;
};

}  // namespace vantrel::platform
