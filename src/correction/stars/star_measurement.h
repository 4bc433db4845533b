// A star's position, size and light, measured on the full-resolution pixels around it.
#pragma once

#include <optional>

#include "correction/stars/pixel_grid.h"
#include "correction/stars/star_seed.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// Lengths in pixels; light in the image's units.
struct StarMeasurement {
    double x = 0, y = 0;          // the centre
    double halfFluxDiameter = 0;  // of the circle that half of the star's light falls into
    /// The radius that holds 80 % of the light over that of 20 %: 2.7 of a gaussian or a nebula, 2 of an even
    /// disc, less of one with a dark middle.
    double spread = 0;
    bool isDisc() const { return spread < 2.2; }
    double flux = 0;
    double peak = 0;           // height of the gaussian that fits the star best
    double noise = 0;          // of the sky, in each pixel
    double signalToNoise = 0;  // of the whole star, where the sky makes the noise; infinite without any
    int left = 0, right = 0, up = 0, down = 0;  // how far from the centre its light is seen
};

/// Measures the star at the seed, which is given in pixels of the image. Nothing when the star is lost in the
/// noise (its centre wanders away or its light vanishes), or where too few pixels have a value.
///
/// Centre and size are those of the gaussian weight that agrees with the star under it (adaptive moments:
/// Bernstein & Jarvis 2002, AJ 123, 583). The half-flux diameter of a faint star follows from that gaussian,
/// of a bright one from the growth of its light with the radius; both are freed of the blur of the pixels.
std::optional<StarMeasurement> measureStar(const platform::ImageArray& image, const StarSeed& seed);

}  // namespace vantrel::correction
