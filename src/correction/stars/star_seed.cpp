#include "correction/stars/star_seed.h"

#include <cmath>
#include <numbers>

namespace vantrel::correction {
namespace {

constexpr std::size_t kFewestPixels = 4;  // fewer are a hot pixel and what was smoothed of it

struct Pixel {
    int x = 0, y = 0;
};
using Patch = std::vector<Pixel>;

double lightOf(const Patch& patch, const PixelGrid& light) {
    double sum = 0;
    for (const Pixel& pixel : patch) sum += light.at(pixel.x, pixel.y);
    return sum;
}

/// The pixels of `open` that hang together with this one, edge to edge or corner to corner; closes them.
Patch patchFrom(Pixel start, std::vector<char>& open, const PixelGrid& shape) {
    Patch patch = {start};
    open[shape.index(start.x, start.y)] = 0;
    for (std::size_t next = 0; next < patch.size(); ++next)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const Pixel pixel = {patch[next].x + dx, patch[next].y + dy};
                if (!shape.contains(pixel.x, pixel.y) || !open[shape.index(pixel.x, pixel.y)]) continue;
                open[shape.index(pixel.x, pixel.y)] = 0;
                patch.push_back(pixel);
            }
    return patch;
}

/// Of the patches of open pixels, the one with most light.
Patch brightestPatch(std::vector<char> open, const PixelGrid& light) {
    Patch brightest;
    double most = 0;
    for (int y = 0; y < light.height; ++y)
        for (int x = 0; x < light.width; ++x) {
            if (!open[light.index(x, y)]) continue;
            Patch patch = patchFrom({x, y}, open, light);
            const double sum = lightOf(patch, light);
            if (sum <= most) continue;
            most = sum;
            brightest = std::move(patch);
        }
    return brightest;
}

double meanAround(const PixelGrid& light, const Pixel& pixel) {
    double sum = 0;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (light.contains(pixel.x + dx, pixel.y + dy)) sum += light.at(pixel.x + dx, pixel.y + dy);
    return sum / 9;
}

Patch brightHalf(const Patch& patch, const PixelGrid& light) {
    PixelGrid smooth(light.width, light.height);
    double highest = 0;
    for (const Pixel& pixel : patch) {
        smooth.at(pixel.x, pixel.y) = meanAround(light, pixel);
        highest = std::max(highest, smooth.at(pixel.x, pixel.y));
    }
    std::vector<char> open(light.values.size(), 0);
    for (const Pixel& pixel : patch)
        open[light.index(pixel.x, pixel.y)] = smooth.at(pixel.x, pixel.y) >= highest / 2;
    return brightestPatch(std::move(open), light);
}

void measureShape(StarSeed& seed, const Patch& core) {
    double x = 0, y = 0, xx = 0, xy = 0, yy = 0;
    const auto count = static_cast<double>(core.size());
    for (const Pixel& pixel : core) {
        x += pixel.x / count;
        y += pixel.y / count;
    }
    for (const Pixel& pixel : core) {
        xx += (pixel.x - x) * (pixel.x - x) / count;
        xy += (pixel.x - x) * (pixel.y - y) / count;
        yy += (pixel.y - y) * (pixel.y - y) / count;
    }
    const double mean = (xx + yy) / 2, apart = std::hypot((xx - yy) / 2, xy);
    seed.length = std::sqrt(12 * (mean + apart));
    seed.breadth = std::max(1.0, std::sqrt(12 * std::max(0.0, mean - apart)));
    seed.angle = std::atan2(2 * xy, xx - yy) / 2;
}

}  // namespace

std::optional<StarSeed> brightestSeed(const PixelGrid& light) {
    std::vector<char> open(light.values.size());
    for (std::size_t i = 0; i < open.size(); ++i) open[i] = light.values[i] > 0;
    const Patch patch = brightestPatch(std::move(open), light);
    if (patch.size() < kFewestPixels) return std::nullopt;
    const Patch core = brightHalf(patch, light);

    StarSeed seed;
    const double sum = lightOf(core, light);
    for (const Pixel& pixel : core) {
        seed.x += pixel.x * light.at(pixel.x, pixel.y) / sum;
        seed.y += pixel.y * light.at(pixel.x, pixel.y) / sum;
    }
    measureShape(seed, core);
    for (const Pixel& pixel : core) seed.height = std::max(seed.height, meanAround(light, pixel));
    seed.width = 2 * std::sqrt(static_cast<double>(core.size()) / std::numbers::pi);
    return seed;
}

}  // namespace vantrel::correction
