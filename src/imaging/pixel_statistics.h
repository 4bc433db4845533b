// What an image's pixels hold, told from a sample of them.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/image_array.h"

namespace vantrel::imaging {

/// Pixels of at least this value are marks that were drawn: no camera counts so far.
inline constexpr double kMarkValue = 2147483000.0;

/// In the image's units. The sample leaves out marks, what is saturated as marks are in 16 bits, and what
/// isn't a finite number; when nothing remains all values are 0.
struct PixelStatistics {
    std::vector<float> sample;  // sorted
    double lowest = 0, highest = 0;
    double median = 0;
    double deviation = 0;  // standard deviation of the sky's noise: 1.4826 × median absolute deviation
};

/// From some 40,000 pixels spread evenly over the image, whatever its size.
PixelStatistics statisticsOf(const platform::ImageArray& image);

}  // namespace vantrel::imaging
