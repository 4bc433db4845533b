// The gaussian that agrees with a star, found by adaptive moments (Bernstein & Jarvis 2002, AJ 123, 583).
#pragma once

#include <optional>

#include "correction/stars/pixel_grid.h"

namespace vantrel::correction {

inline constexpr double kWidthOverSigma = 2.354820045;  // full width at half maximum: 2 √(2 ln 2)
inline constexpr double kWidestStar = 60;               // pixels

struct StarGaussian {
    double x = 0, y = 0;  // pixels
    double sigma = 0;     // pixels
    double peak = 0;
};

/// The gaussian weight that has the star's centre and breadth under itself, from a start near the star. The
/// sky must be taken away. Nothing when the weight drifts further than `reach` (pixels) from where it
/// started, or finds no light.
std::optional<StarGaussian> agreedGaussian(const PixelGrid& pixels, const StarGaussian& start, double reach);

/// Replaces pixels that no star of this breadth (standard deviation, pixels) can have made by the lower pair
/// of their neighbours' means. The noise is that of a pixel.
PixelGrid withoutSpikes(const PixelGrid& pixels, double sigma, double noise);

}  // namespace vantrel::correction
