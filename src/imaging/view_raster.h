// An image's visible part in the screen's own pixels.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/image_viewport.h"
#include "imaging/pixel_statistics.h"
#include "imaging/tone_curve.h"
#include "platform/image_array.h"

namespace vantrel::imaging {

/// Row after row, in the image's units; kMarkValue where a mark shows.
struct ViewRaster {
    int width = 0, height = 0;
    std::vector<float> values;
};

/// Enlarged, a pixel of the image becomes a square. Reduced, a pixel of the screen shows the mean of the
/// pixels that it covers, which smooths noise as a smaller frame would; but where one of them stands out of
/// that mean it shows the brightest, so that neither stars nor lines of one pixel are lost. Pixels that were
/// set in the image are marks, whatever their value. The window must lie inside the image. Takes time for the
/// visible part only.
ViewRaster rasterOf(const platform::ImageArray& image, const ViewWindow& window,
                    const PixelStatistics& statistics);

/// A circle in the window, in pixels of the screen.
struct ViewCircle {
    ViewPoint centre;
    double radius = 0;

    bool contains(double x, double y) const;
    bool operator==(const ViewCircle&) const = default;
};

/// Shows in the circle what lies beneath the marks. `raster` is that of the same image and window.
void uncover(ViewRaster& raster, const platform::ImageArray& image, const ViewWindow& window,
             const PixelStatistics& statistics, const ViewCircle& circle);

/// Pixels of a screen, for each brightness of a ToneCurve.
using ToneColors = std::array<std::uint32_t, 256>;

/// Writes the raster's row in colours; `row` from 0, room for its width at `colors`.
void paintRow(const ViewRaster& raster, int row, const ToneCurve& curve, const ToneColors& colors,
              std::uint32_t* pixels);

}  // namespace vantrel::imaging
