// The star that the operator points at.
#pragma once

#include <optional>

#include "platform/image_array.h"

namespace vantrel::correction {

/// Lengths in pixels, light in the image's units.
struct StarUnderPoint {
    double x = 0, y = 0;          // column and row of its centre
    double halfFluxDiameter = 0;  // of the circle that half of its light falls into
    double peak = 0;              // its highest pixel, sky included: what tells of saturation
    double flux = 0;              // sky not included
    double signalToNoise = 0;     // of the whole star; infinite in a sky without noise
};

/// The star at column x and row y, or the brightest of those within a dozen pixels. Nothing when there is
/// none, or the point lies outside the image. Looks at no more than about a hundred pixels' square around the
/// point, however large the image is, and through marks that were set in it. Throws nothing of its own.
std::optional<StarUnderPoint> measureStarAt(const platform::ImageArray& image, double x, double y);

}  // namespace vantrel::correction
