// From the pixels of a file to a small image that is ready for detection.
//
// Large images are binned, so that the search for stars costs about the same whatever the camera. On the way,
// hot pixels (single ones that stand out of a dark neighbourhood) and hot columns are replaced, and what
// remains of the background is taken off and the noise brought to 1 everywhere.
#pragma once

#include <cstddef>
#include <vector>

namespace vantrel::fits {
class FitsImage;
}

namespace vantrel::solver {

struct ReducedImage {
    std::size_t width = 0;  ///< in bins; what is left over at the right and bottom border is dropped
    std::size_t height = 0;
    std::size_t binning = 1;    ///< pixels a side of each bin
    bool mosaic = false;        ///< a colour sensor's raw image
    std::vector<float> pixels;  ///< background 0, noise 1; "not a number" where no pixel has a value
    double noise = 1;           ///< typical noise of a bin's sum, in the image's own unit
};

struct ReductionSettings {
    bool removeHotPixels = true;
    std::size_t largestSize = 800'000;  ///< bins that the reduced image may have before binning goes up
};

/// Reads the image once (and a few of its rows twice). Throws FitsError when the file can't be read.
ReducedImage reduceImage(const fits::FitsImage& image, const ReductionSettings& settings);

}  // namespace vantrel::solver
