#include "correction/stars/star_under_point.h"

#include <cmath>
#include <limits>

#include "correction/stars/defective_lines.h"
#include "correction/stars/image_piece.h"
#include "correction/stars/star_light.h"
#include "correction/stars/star_measurement.h"

namespace vantrel::correction {
namespace {

constexpr int kNeighbourhood = 50;  // pixels to each side
constexpr int kAim = 12;            // pixels that a point may miss its star by

PixelBox around(double x, double y, int margin, const platform::ImageArray& image) {
    const auto column = static_cast<int>(std::lround(x));
    const auto row = static_cast<int>(std::lround(y));
    return PixelBox{column - margin, row - margin, column + margin + 1, row + margin + 1}.clipped(
        static_cast<int>(image.width()), static_cast<int>(image.height()));
}

double highestPixel(const platform::ImageArray& image, const StarMeasurement& star) {
    const int radius = std::max(1, static_cast<int>(star.halfFluxDiameter / 2));
    const PixelBox box = around(star.x, star.y, radius, image);
    double highest = std::numeric_limits<double>::lowest();
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x) {
            const double value = image.at(static_cast<std::size_t>(x), static_cast<std::size_t>(y));
            if (std::isfinite(value)) highest = std::max(highest, value);
        }
    return highest;
}

}  // namespace

std::optional<StarUnderPoint> measureStarAt(const platform::ImageArray& image, double x, double y) {
    if (!(x >= -0.5 && y >= -0.5 && x < static_cast<double>(image.width()) - 0.5 &&
          y < static_cast<double>(image.height()) - 0.5))
        return std::nullopt;
    const PixelBox box = around(x, y, kNeighbourhood, image);
    platform::ImageArray piece = pieceOf(image, box);
    const SkyLevel sky(piece, kNeighbourhood - 2);
    piece = withoutDefectiveLines(piece, sky);
    const PixelBox aim = around(x - box.left, y - box.top, kAim, piece);
    auto seed = brightestSeed(starLight(piece, sky, aim));
    if (!seed) return std::nullopt;
    seed->x += aim.left;
    seed->y += aim.top;
    const auto star = measureStar(piece, *seed);
    if (!star || !PixelBox{0, 0, box.width(), box.height()}.contains(static_cast<int>(std::lround(star->x)),
                                                                     static_cast<int>(std::lround(star->y))))
        return std::nullopt;
    return StarUnderPoint{star->x + box.left,         star->y + box.top, star->halfFluxDiameter,
                          highestPixel(piece, *star), star->flux,        star->signalToNoise};
}

}  // namespace vantrel::correction
