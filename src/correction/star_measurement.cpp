#include "correction/star_measurement.h"

#include <array>
#include <cmath>
#include <functional>

#include "engine/sky_geometry.h"

namespace vantrel::correction {
namespace {

constexpr double kPi = 3.14159265358979;
constexpr double kWidthOverSigma = 2.354820045;  // full width at half maximum of a gaussian: 2 √(2 ln 2)
constexpr double kPixelVariance = 1.0 / 12;      // of a pixel's own breadth
constexpr double kWidest = 60;                   // pixels

double square(double value) { return value * value; }

/// The pixels around the seed; (x, y) of everything below count from the corner of this piece.
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
                    piece.pixels.at(x, y) = std::isfinite(value) ? value : 0;
                }
        },
        image.pixels());
    return piece;
}

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The sky around a star: a plane, bent where a nebula's glow bends.
struct Sky {
    double level = 0, perColumn = 0, perRow = 0;  // at the star, and its slopes
    double bend = 0;                              // per square pixel of distance from the star
    double noise = 0;

    double at(double dx, double dy) const {
        return level + perColumn * dx + perRow * dy + bend * (square(dx) + square(dy));
    }
};

struct RingPixel {
    double dx, dy, value;
};

/// The plane through values of the pixels, by least squares.
template <typename Value>
Sky planeThrough(const std::vector<RingPixel>& pixels, Value&& value) {
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
    Sky plane = {level, perColumn, perRow, 0, 0};
    double squares = 0;
    for (const RingPixel& pixel : pixels) squares += square(value(pixel) - plane.at(pixel.dx, pixel.dy));
    plane.noise = std::sqrt(squares / static_cast<double>(pixels.size()));
    return plane;
}

/// Least squares; bent only where the pixels show it beyond doubt, as a bend costs certainty of the level.
Sky fitted(const std::vector<RingPixel>& pixels) {
    constexpr double kBeyondDoubt = 5;
    Sky sky = planeThrough(pixels, [](const RingPixel& pixel) { return pixel.value; });
    // What of the squared distance is no plane has its own say in what the plane left over.
    const auto distance = [](const RingPixel& pixel) { return square(pixel.dx) + square(pixel.dy); };
    const Sky plane = planeThrough(pixels, distance);
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

/// The sky under the star as the ring around it shows it, other stars and wrong pixels left out.
Sky skyAround(const PixelGrid& pixels, double centreX, double centreY, double inner, double outer) {
    constexpr int kRounds = 5;
    constexpr double kOutlier = 3;
    constexpr double kNoiseOverDeviation = 1.4826;  // of gaussian noise: to the median absolute deviation
    constexpr std::size_t kFewestPixels = 12;
    std::vector<RingPixel> ring;
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x) {
            const double radius = std::hypot(x - centreX, y - centreY);
            if (radius >= inner && radius <= outer)
                ring.push_back({x - centreX, y - centreY, pixels.at(x, y)});
        }
    if (ring.size() < kFewestPixels) return {};
    std::vector<double> values;
    for (const RingPixel& pixel : ring) values.push_back(pixel.value);
    Sky sky = {medianOf(values), 0, 0, 0, 0};
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

void subtract(PixelGrid& pixels, const Sky& sky, double centreX, double centreY) {
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x) pixels.at(x, y) -= sky.at(x - centreX, y - centreY);
}

/// Second largest of the four direct neighbours.
double secondNeighbour(const PixelGrid& pixels, int x, int y) {
    std::array<double, 4> around = {pixels.at(x - 1, y), pixels.at(x + 1, y), pixels.at(x, y - 1),
                                    pixels.at(x, y + 1)};
    std::nth_element(around.begin(), around.begin() + 1, around.end(), std::greater<>());
    return around[1];
}

/// Replaces pixels that no star of this breadth (standard deviation) can have made by the lower pair of their
/// neighbours' means.
PixelGrid withoutSpikes(const PixelGrid& pixels, double sigma, double noise) {
    constexpr double kTolerance = 1.3;
    constexpr double kBeyondNoise = 6;
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

/// The gaussian that agrees with the star.
struct Gaussian {
    double x = 0, y = 0;
    double sigma = 0;
    double peak = 0;
};

struct WeightedMoments {
    double light = 0, dx = 0, dy = 0, variance = 0;
};

WeightedMoments moments(const PixelGrid& pixels, const Gaussian& weight) {
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

/// Nothing when the weight drifts further than `reach` from where it started, or finds no light.
std::optional<Gaussian> agreed(const PixelGrid& pixels, const Gaussian& start, double reach) {
    constexpr int kMostRounds = 60;
    constexpr double kNarrowest = 1.25;  // as weight: sums over whole pixels stay good for integrals
    Gaussian star = start;
    for (int round = 0; round < kMostRounds; ++round) {
        Gaussian weight = star;
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
        star = {star.x + stepX, star.y + stepY, std::min(sigma, kWidest), m.light / (2 * kPi * m.variance)};
        if (std::hypot(star.x - start.x, star.y - start.y) > reach) return std::nullopt;
        if (settled) break;
    }
    return star;
}

struct Growth {
    double total = 0;
    double halfRadius = 0;
};

/// Light within circles around the star: all of it, and the radius that encloses half.
Growth growthOf(const PixelGrid& pixels, const Gaussian& star, double radius) {
    constexpr int kParts = 5;  // of a pixel, along each axis
    constexpr double kStep = 0.02;
    std::vector<double> rings(static_cast<std::size_t>(radius / kStep) + 1, 0.0);
    const PixelBox box =
        PixelBox{static_cast<int>(star.x - radius), static_cast<int>(star.y - radius),
                 static_cast<int>(star.x + radius) + 2, static_cast<int>(star.y + radius) + 2}
            .clipped(pixels.width, pixels.height);
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x)
            for (int part = 0; part < kParts * kParts; ++part) {
                const double dx = x - star.x + (part % kParts + 0.5) / kParts - 0.5;
                const double dy = y - star.y + (part / kParts + 0.5) / kParts - 0.5;
                const auto ring = static_cast<std::size_t>(std::hypot(dx, dy) / kStep);
                if (ring < rings.size()) rings[ring] += pixels.at(x, y) / (kParts * kParts);
            }
    Growth growth;
    for (const double light : rings) growth.total += light;
    double sum = 0;
    for (std::size_t ring = 0; ring < rings.size(); ++ring) {
        if (sum + rings[ring] >= growth.total / 2) {
            const double share = rings[ring] != 0 ? (growth.total / 2 - sum) / rings[ring] : 0;
            growth.halfRadius = (static_cast<double>(ring) + share) * kStep;
            break;
        }
        sum += rings[ring];
    }
    return growth;
}

double withoutPixelBlur(double halfFluxDiameter, double pixelVariance) {
    return std::sqrt(std::max(0.0, square(halfFluxDiameter) - square(kWidthOverSigma) * pixelVariance));
}

void measureLight(StarMeasurement& star, const PixelGrid& pixels, const Gaussian& gaussian) {
    constexpr double kFaint = 150, kBright = 1000;  // signal to noise
    constexpr double kSharp = 1.2;  // standard deviation: below, circles cut the pixels too coarsely
    // Light weighted by the gaussian itself, the best weight against even noise.
    star.signalToNoise = gaussian.peak * gaussian.sigma * std::sqrt(kPi) / star.noise;
    // The fainter the star, the less of its wings is worth its noise.
    const double share =
        std::clamp(std::log(star.signalToNoise / kFaint) / std::log(kBright / kFaint), 0.0, 1.0);
    const double radius = (1.75 + 1.25 * share) * kWidthOverSigma * gaussian.sigma;
    const Growth growth = growthOf(pixels, gaussian, radius);
    star.flux = growth.total;
    star.halfFluxDiameter = star.signalToNoise > kFaint && gaussian.sigma > kSharp
                                ? withoutPixelBlur(2 * growth.halfRadius, 2 * kPixelVariance)
                                : withoutPixelBlur(kWidthOverSigma * gaussian.sigma, kPixelVariance);
}

/// How far from the star's middle its light is seen along one axis, in one direction.
int reachOf(const PixelGrid& pixels, const Gaussian& star, int stepX, int stepY, double faintest) {
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
        if (sum < faintest * count) break;
    }
    return reach;
}

void measureExtent(StarMeasurement& star, const PixelGrid& pixels, const Gaussian& gaussian) {
    const double faintest = std::max(2 * star.noise, 0.02 * gaussian.peak);
    star.left = reachOf(pixels, gaussian, -1, 0, faintest);
    star.right = reachOf(pixels, gaussian, 1, 0, faintest);
    star.up = reachOf(pixels, gaussian, 0, -1, faintest);
    star.down = reachOf(pixels, gaussian, 0, 1, faintest);
}

}  // namespace

std::optional<StarMeasurement> measureStar(const platform::ImageArray& image, const StarSeed& seed) {
    constexpr double kSharpest = 0.68;  // standard deviation of a star of 1.5 pixels on pixels
    const double width = std::min(seed.width, kWidest);
    const double inner = 3 * width + 3;
    const double outer = 5 * width + 6;
    Piece piece = cutOut(image, seed, outer);
    const double x = seed.x - piece.box.left;
    const double y = seed.y - piece.box.top;
    const Sky sky = skyAround(piece.pixels, x, y, inner, outer);
    subtract(piece.pixels, sky, x, y);

    // First with what any star may have, then with what this one can.
    const double reach = 4.5 + width;
    const Gaussian start = {x, y, width / kWidthOverSigma, 0};
    auto star = agreed(withoutSpikes(piece.pixels, kSharpest, sky.noise), start, reach);
    if (!star) return std::nullopt;
    const PixelGrid clean = withoutSpikes(piece.pixels, std::max(kSharpest, star->sigma), sky.noise);
    star = agreed(clean, *star, reach);
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
