// The sky's brightness and noise, place by place.
#pragma once

#include <vector>

#include "correction/stars/pixel_grid.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// How many deviations above the sky something is before it counts as light.
inline constexpr double kStandsOut = 4;

/// The level and noise of the sky in square cells, from a sample of each cell's pixels: the median, and how
/// far the darker ones lie below it once the slope towards the neighbouring cells is taken away. Between the
/// cells' centres the level is interpolated, so gradients and nebulae wider than a cell belong to the sky;
/// what it misses of narrower ones, or may miss by taking samples only, counts as noise. Cells most of whose
/// pixels have no value (are no finite numbers) have the sky of those around them.
class SkyLevel {
  public:
    /// `cell` in pixels, at least large enough that the stars looked for cover less than half of it. There is
    /// no less noise than `leastNoise`. Throws the run-time failure 5 when no cell has a sky of its own.
    SkyLevel(const platform::ImageArray& image, int cell, double leastNoise = 0);

    struct Sky {
        double level, noise;
    };
    /// Beyond the outermost cells' centres the slope of the level between the last two goes on.
    Sky at(double x, double y) const {
        const Between column = between((x + 0.5) * cellsPerColumn_ - 0.5, levels_.width);
        const Between row = between((y + 0.5) * cellsPerRow_ - 0.5, levels_.height);
        return {interpolated(levels_, column, row, column.share, row.share),
                interpolated(noises_, column, row, std::clamp(column.share, 0.0, 1.0),
                             std::clamp(row.share, 0.0, 1.0))};
    }
    /// Of the whole image.
    double typicalNoise() const { return typicalNoise_; }

  private:
    /// Two neighbouring cells, and how far it is from the first one's centre to the second one's.
    struct Between {
        int first, second;
        double share;
    };
    static Between between(double cells, int count) {
        const int first = std::clamp(static_cast<int>(cells), 0, std::max(0, count - 2));
        return {first, std::min(first + 1, count - 1), cells - first};
    }
    static double interpolated(const PixelGrid& grid, const Between& column, const Between& row, double u,
                               double v) {
        return (1 - v) *
                   ((1 - u) * grid.at(column.first, row.first) + u * grid.at(column.second, row.first)) +
               v * ((1 - u) * grid.at(column.first, row.second) + u * grid.at(column.second, row.second));
    }

    double cellsPerColumn_ = 1, cellsPerRow_ = 1;
    PixelGrid levels_, noises_;
    double typicalNoise_ = 0;
};

}  // namespace vantrel::correction
