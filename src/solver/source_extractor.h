// Detection of sources in an image of constant noise.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vantrel::solver {

struct Source {
    double x = 0;  ///< barycentre, pixel centres at whole numbers
    double y = 0;
    double flux = 0;       ///< sum over its pixels, in the image's unit
    double peak = 0;       ///< highest pixel
    double sigma = 0;      ///< mean one of its axes, pixels
    double longSigma = 0;  ///< along its longest axis
    double angleDeg = 0;   ///< of that axis, from the rows towards higher ones
    int pixels = 0;        ///< above the threshold
    bool cut = false;      ///< touches the image's border
};

struct ExtractionSettings {
    double sigma = 4;       ///< threshold over the background in units of the smoothed image's noise
    int minimumPixels = 2;  ///< connected pixels over the threshold
    double filterFwhm = 0;  ///< width of the smoothing gaussian in pixels; 0 is the customary small kernel
    std::size_t atMost = 2000;  ///< keep only this many of the brightest
};

/// The sources of a background-subtracted image whose noise is 1 everywhere, brightest first. Row after row
/// from the top; width * height pixels, "not a number" where there is no value. Never fails: an image with
/// too much to detect is searched again with a higher threshold.
std::vector<Source> extractSources(std::span<const float> image, std::size_t width, std::size_t height,
                                   const ExtractionSettings& settings);

}  // namespace vantrel::solver
