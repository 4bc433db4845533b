#include "imaging/drawn_line.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace vantrel::imaging {
namespace {

/// Which places of a circle around the point are bright; those outside the image are not.
std::vector<bool> brightPlaces(const platform::ImageArray& image, double x, double y, double radius,
                               double brightness) {
    constexpr double kPerPixel = 2;
    const auto half = static_cast<int>(std::ceil(kPerPixel * std::numbers::pi * radius));
    std::vector<bool> bright;
    for (int i = 0; i < 2 * half; ++i) {
        const double angle = std::numbers::pi * i / half;
        const double column = std::round(x + radius * std::cos(angle));
        const double row = std::round(y + radius * std::sin(angle));
        const bool inside = column >= 0 && row >= 0 && column < static_cast<double>(image.width()) &&
                            row < static_cast<double>(image.height());
        bright.push_back(inside && image.at(static_cast<std::size_t>(column),
                                            static_cast<std::size_t>(row)) >= brightness);
    }
    return bright;
}

bool goesThrough(const std::vector<bool>& bright) {
    const auto count = static_cast<std::ptrdiff_t>(bright.size());
    if (2 * std::count(bright.begin(), bright.end(), true) > count) return false;  // all around
    const std::ptrdiff_t askew = count / 12;  // the point may lie beside the line's middle
    for (std::ptrdiff_t place = 0; place < count / 2; ++place) {
        if (!bright[static_cast<std::size_t>(place)]) continue;
        for (std::ptrdiff_t across = count / 2 - askew; across <= count / 2 + askew; ++across)
            if (bright[static_cast<std::size_t>((place + across) % count)]) return true;
    }
    return false;
}

}  // namespace

bool isDrawnLine(const platform::ImageArray& image, double x, double y, double size, double brightness) {
    constexpr double kBeyondStars = 1.5;  // diameters: a star is down to a few thousandths there
    constexpr double kNear = 8;           // pixels: seen also where the line ends or meets another
    return goesThrough(brightPlaces(image, x, y, kNear, brightness)) ||
           goesThrough(brightPlaces(image, x, y, std::max(kNear, kBeyondStars * size), brightness));
}

}  // namespace vantrel::imaging
