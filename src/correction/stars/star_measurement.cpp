#include "correction/stars/star_measurement.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

#include "correction/stars/sky_around.h"
#include "correction/stars/star_gaussian.h"
#include "correction/stars/statistics.h"
#include "platform/grid_gaps.h"

namespace vantrel::correction {
namespace {

constexpr double kPixelVariance = 1.0 / 12;  // of a pixel's own breadth

/// The pixels around the seed, "not a number" where they have no value; (x, y) of everything below count from
/// the corner of this piece.
struct Piece {
    PixelBox box;
    PixelGrid pixels;
};

Piece cutOut(const platform::ImageArray& image, const StarSeed& seed, double radius) {
    const PixelBox box =
        PixelBox{static_cast<int>(seed.x - radius), static_cast<int>(seed.y - radius),
                 static_cast<int>(seed.x + radius) + 2, static_cast<int>(seed.y + radius) + 2}
            .clipped(static_cast<int>(image.width()), static_cast<int>(image.height()));
    Piece piece = {box, PixelGrid(box.width(), box.height())};
    std::visit(
        [&](const auto& pixels) {
            for (int y = 0; y < box.height(); ++y)
                for (int x = 0; x < box.width(); ++x) {
                    const auto place = static_cast<std::size_t>(box.top + y) * image.width() +
                                       static_cast<std::size_t>(box.left + x);
                    const auto value = static_cast<double>(pixels[place]);
                    piece.pixels.at(x, y) = std::isfinite(value) ? value : kNoValue;
                }
        },
        image.pixels());
    return piece;
}

/// Whether most of what lies within a radius of the place has a value.
bool isSeen(const PixelGrid& pixels, double x0, double y0, double radius) {
    int seen = 0, all = 0;
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x) {
            if (std::hypot(x - x0, y - y0) > radius) continue;
            ++all;
            if (!std::isnan(pixels.at(x, y))) ++seen;
        }
    return 4 * seen >= 3 * all;
}

/// Light within circles around the star.
class Growth {
  public:
    Growth(const PixelGrid& pixels, const StarGaussian& star, double radius)
        : rings_(static_cast<std::size_t>(radius / kStep) + 1, 0.0) {
        constexpr int kParts = 5;  // of a pixel, along each axis
        const PixelBox box =
            PixelBox{static_cast<int>(star.x - radius), static_cast<int>(star.y - radius),
                     static_cast<int>(star.x + radius) + 2, static_cast<int>(star.y + radius) + 2}
                .clipped(pixels.width, pixels.height);
        for (int y = box.top; y < box.bottom; ++y)
            for (int x = box.left; x < box.right; ++x)
                for (int part = 0; part < kParts * kParts; ++part) {
                    const int column = part % kParts;
                    const int row = part / kParts;
                    const double dx = x - star.x + (column + 0.5) / kParts - 0.5;
                    const double dy = y - star.y + (row + 0.5) / kParts - 0.5;
                    const auto ring = static_cast<std::size_t>(std::hypot(dx, dy) / kStep);
                    if (ring < rings_.size()) rings_[ring] += pixels.at(x, y) / (kParts * kParts);
                }
    }

    double within(double radius) const {
        const auto end = std::min(rings_.size(), static_cast<std::size_t>(radius / kStep) + 1);
        return std::accumulate(rings_.begin(), rings_.begin() + static_cast<std::ptrdiff_t>(end), 0.0);
    }

    /// The radius that so much light lies within.
    double radiusOf(double light) const {
        double sum = 0;
        for (std::size_t ring = 0; ring < rings_.size(); ++ring) {
            if (sum + rings_[ring] >= light) {
                const double part = rings_[ring] != 0 ? (light - sum) / rings_[ring] : 0;
                return (static_cast<double>(ring) + part) * kStep;
            }
            sum += rings_[ring];
        }
        return 0;
    }

  private:
    static constexpr double kStep = 0.02;  // pixels

    std::vector<double> rings_;
};

double withoutPixelBlur(double halfFluxDiameter, double pixelVariance) {
    return std::sqrt(std::max(0.0, square(halfFluxDiameter) - square(kWidthOverSigma) * pixelVariance));
}

void measureLight(StarMeasurement& star, const PixelGrid& pixels, const StarGaussian& gaussian) {
    constexpr double kFaint = 150, kBright = 1000;  // signal to noise
    constexpr double kSharp = 1.2;  // standard deviation: below, circles cut the pixels too coarsely
    constexpr double kAlmostAll = 1.3, kNear = 1.75, kFar = 3;  // widths
    // Light weighted by the gaussian itself, the best weight against even noise.
    star.signalToNoise = gaussian.peak * gaussian.sigma * std::sqrt(std::numbers::pi) / star.noise;
    const double width = kWidthOverSigma * gaussian.sigma;
    const Growth growth(pixels, gaussian, kFar * width);
    const double near = growth.within(kAlmostAll * width);
    star.spread = growth.radiusOf(0.8 * near) / growth.radiusOf(0.2 * near);
    // The fainter the star, the less of its wings is worth its noise; and a disc has none.
    const double share =
        star.isDisc()
            ? 0
            : std::clamp(std::log(star.signalToNoise / kFaint) / std::log(kBright / kFaint), 0.0, 1.0);
    star.flux = growth.within((kNear + share * (kFar - kNear)) * width);
    star.halfFluxDiameter = star.isDisc() || (star.signalToNoise > kFaint && gaussian.sigma > kSharp)
                                ? withoutPixelBlur(2 * growth.radiusOf(star.flux / 2), 2 * kPixelVariance)
                                : withoutPixelBlur(width, kPixelVariance);
}

/// How far from the star's middle its light is seen along one axis, in one direction: beyond the dark middle
/// of one that is out of focus.
int reachOf(const PixelGrid& pixels, const StarGaussian& star, int stepX, int stepY, double faintest) {
    int x = static_cast<int>(std::lround(star.x));
    int y = static_cast<int>(std::lround(star.y));
    int reach = 0;
    for (; pixels.contains(x, y); ++reach, x += stepX, y += stepY) {
        double sum = 0;
        double count = 0;
        for (int side = -1; side <= 1; ++side) {
            const int column = x + side * std::abs(stepY);
            const int row = y + side * std::abs(stepX);
            if (!pixels.contains(column, row)) continue;
            sum += pixels.at(column, row);
            ++count;
        }
        if (reach > star.sigma && sum < faintest * count) break;
    }
    return reach;
}

void measureExtent(StarMeasurement& star, const PixelGrid& pixels, const StarGaussian& gaussian) {
    const double faintest = std::max(2 * star.noise, 0.02 * gaussian.peak);
    star.left = reachOf(pixels, gaussian, -1, 0, faintest);
    star.right = reachOf(pixels, gaussian, 1, 0, faintest);
    star.up = reachOf(pixels, gaussian, 0, -1, faintest);
    star.down = reachOf(pixels, gaussian, 0, 1, faintest);
}

}  // namespace

std::optional<StarMeasurement> measureStar(const platform::ImageArray& image, const StarSeed& seed) {
    constexpr double kWide = 12;        // pixels
    constexpr double kSharpest = 0.68;  // standard deviation of a star of 1.5 pixels on pixels
    const double width = std::min(seed.width, kWidestStar);
    // A gaussian star's light ends three widths away; so wide a one as a disc out of focus, which ends much
    // sooner.
    const double inner = std::min(3 * width + 3, width + 2 * kWide + 3);
    const double outer = inner + 2 * std::min(width, kWide) + 3;
    Piece piece = cutOut(image, seed, outer);
    const double x = seed.x - piece.box.left;
    const double y = seed.y - piece.box.top;
    if (!isSeen(piece.pixels, x, y, width)) return std::nullopt;
    const SkyAround sky = skyAround(piece.pixels, x, y, inner, outer);
    subtract(piece.pixels, sky, x, y);
    platform::fillGaps(piece.pixels.values, static_cast<std::size_t>(piece.pixels.width));

    // First with what any star may have, then with what this one can.
    const double reach = 4.5 + width;
    const StarGaussian start = {x, y, width / kWidthOverSigma, 0};
    auto star = agreedGaussian(withoutSpikes(piece.pixels, kSharpest, sky.noise), start, reach);
    if (!star) return std::nullopt;
    const PixelGrid clean = withoutSpikes(piece.pixels, std::max(kSharpest, star->sigma), sky.noise);
    star = agreedGaussian(clean, *star, reach);
    if (!star) return std::nullopt;

    StarMeasurement measured;
    measured.x = star->x + piece.box.left;
    measured.y = star->y + piece.box.top;
    measured.peak = star->peak;
    measured.noise = sky.noise;
    measureLight(measured, clean, *star);
    measureExtent(measured, clean, *star);
    return measured;
}

}  // namespace vantrel::correction
