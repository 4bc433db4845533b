#include "correction/stars/star_gaussian.h"

#include <array>
#include <cmath>
#include <functional>
#include <numbers>

#include "correction/stars/statistics.h"

namespace vantrel::correction {
namespace {

/// Second largest of the four direct neighbours.
double secondNeighbour(const PixelGrid& pixels, int x, int y) {
    std::array<double, 4> around = {pixels.at(x - 1, y), pixels.at(x + 1, y), pixels.at(x, y - 1),
                                    pixels.at(x, y + 1)};
    std::nth_element(around.begin(), around.begin() + 1, around.end(), std::greater<>());
    return around[1];
}

struct WeightedMoments {
    double light = 0, dx = 0, dy = 0, variance = 0;
};

WeightedMoments moments(const PixelGrid& pixels, const StarGaussian& weight) {
    constexpr double kReach = 4;  // standard deviations
    const PixelBox box = PixelBox{static_cast<int>(weight.x - kReach * weight.sigma),
                                  static_cast<int>(weight.y - kReach * weight.sigma),
                                  static_cast<int>(weight.x + kReach * weight.sigma) + 2,
                                  static_cast<int>(weight.y + kReach * weight.sigma) + 2}
                             .clipped(pixels.width, pixels.height);
    WeightedMoments sums;
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x) {
            const double dx = x - weight.x;
            const double dy = y - weight.y;
            const double distance = square(dx) + square(dy);
            const double light = pixels.at(x, y) * std::exp(-distance / (2 * square(weight.sigma)));
            sums.light += light;
            sums.dx += light * dx;
            sums.dy += light * dy;
            sums.variance += light * distance / 2;
        }
    sums.dx /= sums.light;
    sums.dy /= sums.light;
    sums.variance /= sums.light;
    return sums;
}

}  // namespace

std::optional<StarGaussian> agreedGaussian(const PixelGrid& pixels, const StarGaussian& start, double reach) {
    constexpr int kMostRounds = 60;      // an end for what doesn't settle
    constexpr double kNarrowest = 1.25;  // as weight: sums over whole pixels stay good for integrals
    StarGaussian star = start;
    for (int round = 0; round < kMostRounds; ++round) {
        StarGaussian weight = star;
        weight.sigma = std::max(star.sigma, kNarrowest);
        const WeightedMoments m = moments(pixels, weight);
        if (!(m.light > 0) || !(m.variance > 0)) return std::nullopt;
        // The product of star and weight is a gaussian whose inverse variance is the sum of theirs.
        const double inverse = 1 / m.variance - 1 / square(weight.sigma);
        const double widest = 1.5 * weight.sigma;
        const double sigma = inverse > 1 / square(widest) ? 1 / std::sqrt(inverse) : widest;
        const double towards = 1 + square(sigma / weight.sigma);
        const double stepX = std::clamp(towards * m.dx, -weight.sigma, weight.sigma);
        const double stepY = std::clamp(towards * m.dy, -weight.sigma, weight.sigma);
        const bool settled =
            std::abs(stepX) < 1e-4 && std::abs(stepY) < 1e-4 && std::abs(sigma - star.sigma) < 1e-3 * sigma;
        star = {star.x + stepX, star.y + stepY, std::min(sigma, kWidestStar),
                m.light / (2 * std::numbers::pi * m.variance)};
        if (std::hypot(star.x - start.x, star.y - start.y) > reach) return std::nullopt;
        if (settled) break;
    }
    return star;
}

PixelGrid withoutSpikes(const PixelGrid& pixels, double sigma, double noise) {
    constexpr double kTolerance = 1.3;  // for stars that are a little sharper than the gaussian
    constexpr double kBeyondNoise = 6;  // standard deviations
    const double steepest = kTolerance * std::exp(1 / (2 * square(sigma)));
    PixelGrid clean = pixels;
    for (int y = 1; y + 1 < pixels.height; ++y)
        for (int x = 1; x + 1 < pixels.width; ++x) {
            const double support = std::max(0.0, secondNeighbour(pixels, x, y));
            if (pixels.at(x, y) <= steepest * support + kBeyondNoise * noise) continue;
            clean.at(x, y) = std::min(pixels.at(x - 1, y) + pixels.at(x + 1, y),
                                      pixels.at(x, y - 1) + pixels.at(x, y + 1)) /
                             2;
        }
    return clean;
}

}  // namespace vantrel::correction
