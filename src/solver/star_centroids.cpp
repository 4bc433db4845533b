#include "solver/star_centroids.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

#include "fits/fits_image.h"
#include "solver/level_grid.h"
#include "solver/pixel_spikes.h"

namespace vantrel::solver {

namespace {

constexpr double kLeastSigma = 0.7;      // grains; a narrower window would see one grain
constexpr double kMostSigma = 12;        // grains
constexpr double kStampReach = 4;        // sigmas from a star's middle to the border of its stamp
constexpr std::size_t kBorder = 2;       // grains around the stamp that tell the background
constexpr std::size_t kWidthStars = 12;  // the brightest tell the width of all
constexpr int kSteps = 10;               // of the window towards the star's middle

/// A star's surroundings, in grains: background 0.
struct Stamp {
    std::size_t side = 0;
    double left = 0, top = 0;  ///< middle of the first grain, in image pixels
    std::vector<float> light;
    double noise = 0;
};

/// What a round window of the star's own size sees of it.
struct WindowedLight {
    double x = 0, y = 0;  ///< grains from the stamp's first one
    double sum = 0;       ///< under the window
    double error = 0;     ///< of x and y, from the background's noise, grains
    double spread = 0;    ///< mean square of the distance from the middle, in one axis
};

/// The window's profile along a row or a column, and its moments about the middle.
std::vector<double> profile(std::size_t side, double middle, double sigma) {
    std::vector<double> result(side);
    for (std::size_t i = 0; i < side; ++i) {
        const double d = static_cast<double>(i) - middle;
        result[i] = std::exp(-d * d / (2 * sigma * sigma));
    }
    return result;
}

/// One look through the window at (x, y), told about where the light's middle is then.
std::optional<WindowedLight> seen(const Stamp& stamp, double x, double y, double sigma) {
    const auto across = profile(stamp.side, x, sigma);
    const auto down = profile(stamp.side, y, sigma);
    double sum = 0, sumX = 0, sumY = 0, squares = 0, variance = 0;
    for (std::size_t j = 0; j < stamp.side; ++j) {
        const double dy = static_cast<double>(j) - y;
        for (std::size_t i = 0; i < stamp.side; ++i) {
            const double dx = static_cast<double>(i) - x;
            const double window = across[i] * down[j];
            const double light = window * static_cast<double>(stamp.light[j * stamp.side + i]);
            const double square = dx * dx + dy * dy;
            sum += light;
            sumX += light * dx;
            sumY += light * dy;
            squares += light * square;
            variance += window * window * square;
        }
    }
    if (!(sum > 0)) return std::nullopt;
    // The window pulls the mean half-way back to its own middle.
    return WindowedLight{x + 2 * sumX / sum, y + 2 * sumY / sum, sum,
                         2 * stamp.noise * std::sqrt(variance / 2) / sum, squares / sum / 2};
}

class Measurement {
  public:
    Measurement(const fits::FitsImage& image, const CentroidSettings& settings)
        : image_(image),
          settings_(settings),
          grain_(static_cast<double>(settings.grain)),
          sigma_(std::clamp(settings.sigma / grain_, kLeastSigma, kMostSigma)),
          half_(halfFor(sigma_)) {}

    /// Makes the window as wide as the brightest stars are.
    void fitWindow(std::span<const ImageStar> stars) {
        std::vector<double> sigmas;
        for (const ImageStar& star : stars.first(std::min(stars.size(), kWidthStars)))
            if (const auto sigma = sigmaOf(star)) sigmas.push_back(*sigma);
        if (sigmas.empty()) return;
        const auto middle = sigmas.begin() + static_cast<std::ptrdiff_t>(sigmas.size() / 2);
        std::nth_element(sigmas.begin(), middle, sigmas.end());
        sigma_ = *middle;
        half_ = halfFor(sigma_);
    }

    ImageStar measured(const ImageStar& star) const {
        ImageStar result = star;
        result.error = settings_.foundError;
        const auto stamp = stampOf(star);
        if (!stamp) return result;
        const auto light = middleOf(*stamp, star, sigma_);
        if (!light) return result;
        result.x = stamp->left + light->x * grain_;
        result.y = stamp->top + light->y * grain_;
        result.error = light->error * grain_;
        return result;
    }

  private:
    static std::size_t halfFor(double sigma) {
        return static_cast<std::size_t>(std::ceil(kStampReach * sigma)) + kBorder;
    }

    std::optional<Stamp> stampOf(const ImageStar& star) const {
        const auto place = [&](double at) {
            return static_cast<std::ptrdiff_t>(std::floor((at + 0.5) / grain_)) -
                   static_cast<std::ptrdiff_t>(half_);
        };
        const std::ptrdiff_t left = place(star.x);
        const std::ptrdiff_t top = place(star.y);
        const std::size_t grain = settings_.grain;
        const std::size_t pixels = (2 * half_ + 1) * grain;
        if (left < 0 || top < 0) return std::nullopt;
        const std::size_t firstColumn = static_cast<std::size_t>(left) * grain;
        const std::size_t firstRow = static_cast<std::size_t>(top) * grain;
        if (firstColumn + pixels > image_.width() || firstRow + pixels > image_.height()) return std::nullopt;
        std::vector<float> values(pixels * pixels);
        for (std::size_t row = 0; row < pixels; ++row)
            image_.readInRow(firstRow + row, firstColumn, std::span(values).subspan(row * pixels, pixels));
        const auto isBlank = [](float value) { return !isValue(value); };
        if (image_.mayHoldBlanks() && std::ranges::any_of(values, isBlank)) return std::nullopt;
        if (settings_.removeHotPixels) removeSpikes(values, pixels, borderLevel(values, pixels));
        Stamp stamp;
        stamp.side = 2 * half_ + 1;
        stamp.left = static_cast<double>(firstColumn) + (grain_ - 1) / 2;
        stamp.top = static_cast<double>(firstRow) + (grain_ - 1) / 2;
        stamp.light.resize(stamp.side * stamp.side);
        for (std::size_t y = 0; y < pixels; ++y)
            for (std::size_t x = 0; x < pixels; ++x)
                stamp.light[y / grain * stamp.side + x / grain] += values[y * pixels + x];
        const Level level = borderLevel(stamp.light, stamp.side);
        for (float& light : stamp.light) light -= level.background;
        stamp.noise = static_cast<double>(level.noise);
        return stamp;
    }

    static Level borderLevel(std::span<const float> values, std::size_t side) {
        std::vector<float> border;
        for (std::size_t y = 0; y < side; ++y) {
            const bool whole = y < kBorder || y + kBorder >= side;
            for (std::size_t x = 0; x < side; ++x)
                if (whole || x < kBorder || x + kBorder >= side) border.push_back(values[y * side + x]);
        }
        return levelOf(border);
    }

    static void removeSpikes(std::span<float> values, std::size_t side, const Level& level) {
        const float limit = spikeLimit(level);
        for (std::size_t y = 0; y < side; ++y)
            for (std::size_t x = 0; x < side; ++x) {
                float& value = values[y * side + x];
                if (value > limit && isSpike(values, side, x, y, level)) value = level.background;
            }
    }

    /// Nothing when the window wanders off.
    std::optional<WindowedLight> middleOf(const Stamp& stamp, const ImageStar& star, double sigma) const {
        const double x = (star.x - stamp.left) / grain_;
        const double y = (star.y - stamp.top) / grain_;
        const double most = std::max(1.0, 1.5 * sigma);
        WindowedLight last{x, y};
        for (int step = 0; step < kSteps; ++step) {
            const auto now = seen(stamp, last.x, last.y, sigma);
            if (!now || std::hypot(now->x - x, now->y - y) > most) return std::nullopt;
            const double moved = std::hypot(now->x - last.x, now->y - last.y);
            last = *now;
            if (moved < 1e-3) break;
        }
        return last;
    }

    /// A star's own width: window and star make a narrower one together.
    std::optional<double> sigmaOf(const ImageStar& star) const {
        const auto stamp = stampOf(star);
        if (!stamp) return std::nullopt;
        double sigma = sigma_;
        for (int step = 0; step < 4; ++step) {
            const auto light = middleOf(*stamp, star, sigma);
            if (!light || !(light->spread > 0)) return std::nullopt;
            const double inverse = 1 / light->spread - 1 / (sigma * sigma);
            const double widest = 1.3 * sigma_;
            sigma = inverse > 1 / (widest * widest) ? std::max(kLeastSigma, 1 / std::sqrt(inverse)) : widest;
        }
        return sigma;
    }

    const fits::FitsImage& image_;
    const CentroidSettings& settings_;
    double grain_;
    double sigma_;  // grains
    std::size_t half_;
};

}  // namespace

std::vector<ImageStar> measuredStars(const fits::FitsImage& image, std::vector<ImageStar> stars,
                                     const CentroidSettings& settings) {
    Measurement measurement(image, settings);
    measurement.fitWindow(stars);
    std::size_t rank = 0;
    for (ImageStar& star : stars) {
        if (rank++ < settings.atMost)
            star = measurement.measured(star);
        else
            star.error = settings.foundError;
    }
    return stars;
}

}  // namespace vantrel::solver
