// The sky's brightness and noise, place by place.
#pragma once

#include <vector>

#include "correction/pixel_grid.h"
#include "platform/image_array.h"

namespace vantrel::correction {

/// The level and noise of the sky in square cells, from a sample of each cell's pixels: the median, and how
/// far the darker sixth lies below it (one standard deviation of gaussian noise). Between the cells' centres
/// the level is interpolated, so gradients and nebulae wider than a cell belong to the sky.
class SkyLevel {
  public:
    /// `cell` in pixels, at least large enough that the stars looked for cover less than half of it. Throws
    /// the run-time failure 5 when the image holds no finite numbers.
    SkyLevel(const platform::ImageArray& image, int cell);

    /// Beyond the outermost cells' centres the slope between the last two goes on.
    double level(double x, double y) const;
    double noise(double x, double y) const;
    /// Of the whole image.
    double typicalNoise() const { return typicalNoise_; }

  private:
    struct Place {
        int left, top, right, bottom;  // cells
        double u, v;                   // from left to right, from top to bottom: 0 to 1 between their centres
    };
    Place placeOf(double x, double y) const;
    static double between(const PixelGrid& grid, const Place& place);

    double cellWidth_ = 1, cellHeight_ = 1;
    PixelGrid levels_, noises_;
    double typicalNoise_ = 0;
};

}  // namespace vantrel::correction
