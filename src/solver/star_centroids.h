// Where stars stand to a small part of a pixel: measured on the image's own pixels, however coarse the bins
// were in which they were found.
#pragma once

#include <cstddef>
#include <vector>

#include "solver/star_finder.h"

namespace vantrel::solver {

struct CentroidSettings {
    double sigma = 1.5;     ///< about the stars' own, pixels
    std::size_t grain = 1;  ///< pixels a side that show all colours: 2 of a colour sensor's raw image
    bool removeHotPixels = true;
    double foundError = 0.5;   ///< what the places of stars are wrong by as they come, pixels
    std::size_t atMost = 100;  ///< only so many of the brightest are measured
};

/// The stars, brightest first, at better places and with the errors of those. Whatever can't be measured
/// keeps its place: at the border, beside pixels without a value, or when the light's middle isn't near.
/// Throws FitsError when the file can't be read.
std::vector<ImageStar> measuredStars(const fits::FitsImage& image, std::vector<ImageStar> stars,
                                     const CentroidSettings& settings);

}  // namespace vantrel::solver
