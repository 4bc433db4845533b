// Hot pixels: lone ones that stand out of a dark neighbourhood, as no star does.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>

#include "solver/level_grid.h"

namespace vantrel::solver {

/// Brighter pixels may be spikes.
inline float spikeLimit(const Level& level) {
    constexpr float kSigmas = 6;  // chance lets one pixel in a thousand million pass
    return level.background + kSigmas * std::max(level.noise, 1e-9F);
}

/// Whether a pixel over the limit is a lone one: far above the background while its four neighbours are not.
/// Pixels outside of the rows don't count, nor those without a value.
inline bool isSpike(std::span<const float> pixels, std::size_t width, std::size_t x, std::size_t y,
                    const Level& level) {
    constexpr float kShare = 0.25F;  // the four neighbours of a star's peak hold more of it than this
    constexpr float kNoise = 3;      // allowance for the neighbours' own noise
    const std::size_t rows = pixels.size() / width;
    const float excess = pixels[y * width + x] - level.background;
    float sum = 0;
    float count = 0;
    const auto add = [&](std::size_t nx, std::size_t ny) {
        if (!isValue(pixels[ny * width + nx])) return;
        sum += pixels[ny * width + nx] - level.background;
        count += 1;
    };
    if (x > 0) add(x - 1, y);
    if (x + 1 < width) add(x + 1, y);
    if (y > 0) add(x, y - 1);
    if (y + 1 < rows) add(x, y + 1);
    return count > 1 && sum * 4 / count < kShare * excess + kNoise * level.noise;
}

}  // namespace vantrel::solver
