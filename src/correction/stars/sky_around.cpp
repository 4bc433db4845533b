#include "correction/stars/sky_around.h"

#include <cmath>

#include "correction/stars/statistics.h"
#include "engine/sky_geometry.h"

namespace vantrel::correction {
namespace {

struct RingPixel {
    double dx, dy, value;
};

/// The plane through values of the pixels, by least squares.
template <typename Value>
SkyAround planeThrough(const std::vector<RingPixel>& pixels, Value&& value) {
    engine::Matrix sums{};
    engine::Row right{};
    for (const RingPixel& pixel : pixels) {
        const engine::Row terms = {1, pixel.dx, pixel.dy};
        for (std::size_t i = 0; i < terms.size(); ++i) {
            right[i] += terms[i] * value(pixel);
            for (std::size_t j = 0; j < terms.size(); ++j) sums[i][j] += terms[i] * terms[j];
        }
    }
    const auto [level, perColumn, perRow] = engine::Solve3Equations(sums, right);
    SkyAround plane = {level, perColumn, perRow, 0, 0};
    double squares = 0;
    for (const RingPixel& pixel : pixels) squares += square(value(pixel) - plane.at(pixel.dx, pixel.dy));
    plane.noise = std::sqrt(squares / static_cast<double>(pixels.size()));
    return plane;
}

/// Least squares; bent only where the pixels show it beyond doubt, as a bend costs certainty of the level.
SkyAround fitted(const std::vector<RingPixel>& pixels) {
    constexpr double kBeyondDoubt = 5;  // standard deviations of the bend
    SkyAround sky = planeThrough(pixels, [](const RingPixel& pixel) { return pixel.value; });
    // What of the squared distance is no plane has its own say in what the plane left over.
    const auto distance = [](const RingPixel& pixel) { return square(pixel.dx) + square(pixel.dy); };
    const SkyAround plane = planeThrough(pixels, distance);
    double product = 0, squares = 0;
    for (const RingPixel& pixel : pixels) {
        const double bowl = distance(pixel) - plane.at(pixel.dx, pixel.dy);
        product += bowl * (pixel.value - sky.at(pixel.dx, pixel.dy));
        squares += square(bowl);
    }
    if (!(std::abs(product) > kBeyondDoubt * sky.noise * std::sqrt(squares))) return sky;
    sky.bend = product / squares;
    const double explained = product * sky.bend / static_cast<double>(pixels.size());
    sky.noise = std::sqrt(std::max(0.0, square(sky.noise) - explained));
    sky.level -= sky.bend * plane.level;
    sky.perColumn -= sky.bend * plane.perColumn;
    sky.perRow -= sky.bend * plane.perRow;
    return sky;
}

}  // namespace

SkyAround skyAround(const PixelGrid& pixels, double x0, double y0, double inner, double outer) {
    constexpr int kRounds = 5;                      // of leaving out what lies too far off
    constexpr double kOutlier = 3;                  // standard deviations
    constexpr double kNoiseOverDeviation = 1.4826;  // of gaussian noise: to the median absolute deviation
    constexpr std::size_t kFewestPixels = 12;       // three for each of a bent plane's unknowns
    std::vector<RingPixel> ring;
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x) {
            const double radius = std::hypot(x - x0, y - y0);
            if (radius >= inner && radius <= outer && !std::isnan(pixels.at(x, y)))
                ring.push_back({x - x0, y - y0, pixels.at(x, y)});
        }
    if (ring.size() < kFewestPixels) return {};
    std::vector<double> values;
    values.reserve(ring.size());
    for (const RingPixel& pixel : ring) values.push_back(pixel.value);
    SkyAround sky = {medianOf(values), 0, 0, 0, 0};
    for (double& value : values) value = std::abs(value - sky.level);
    sky.noise = kNoiseOverDeviation * medianOf(values);
    for (int round = 0; round < kRounds; ++round) {
        std::vector<RingPixel> kept;
        for (const RingPixel& pixel : ring)
            if (std::abs(pixel.value - sky.at(pixel.dx, pixel.dy)) <= kOutlier * sky.noise)
                kept.push_back(pixel);
        if (kept.size() < kFewestPixels) break;
        sky = fitted(kept);
    }
    return sky;
}

void subtract(PixelGrid& pixels, const SkyAround& sky, double x0, double y0) {
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x) pixels.at(x, y) -= sky.at(x - x0, y - y0);
}

}  // namespace vantrel::correction
