// The stars of an image.
#pragma once

#include <cstddef>
#include <vector>

namespace vantrel::fits {
class FitsImage;
}

namespace vantrel::solver {

struct ImageStar {
    double x = 0;      ///< column in image pixels, pixel centres at whole numbers from 0
    double y = 0;      ///< row, likewise
    double flux = 0;   ///< counts over the background
    double error = 0;  ///< of x and y each, pixels; 0 where nothing is known of it
};

/// How the brightest stars of an image look, all in all.
struct StarLook {
    double width = 0;     ///< at half the height, across the trail if there is one; pixels, 0 if unknown
    double trail = 0;     ///< by how much they are drawn out, all alike; pixels, 0 if they aren't
    double trailDeg = 0;  ///< its direction, from the rows towards higher ones: 0 to 180
};

struct StarList {
    std::vector<ImageStar> stars;  ///< brightest first
    /// Pixels that places are known in parts of: a bin's side, or a third of the stars' trails.
    double grain = 1;
    StarLook look = {};
};

struct StarSettings {
    double minimumSize = 2;        ///< pixels over the threshold
    double minimumBrightness = 0;  ///< counts over the background, summed
    double sigmaAboveMean = 4;     ///< threshold in units of the noise
    double filterFwhmPixels = 0;   ///< gaussian to smooth with; 0 is a small kernel
    double exclusionBorder = 0;    ///< pixels along the border whose stars are left out
    bool removeHotPixels = true;
    std::size_t atMost = 2000;
};

/// Throws FitsError when the file can't be read.
StarList findStars(const fits::FitsImage& image, const StarSettings& settings);

}  // namespace vantrel::solver
