#include "observatory/telescopes/renderer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantrel::observatory {
namespace {

/// The share of a gaussian that falls on each of a row of pixels.
class Profile {
  public:
    /// Pixels first() to first() + size() - 1 lie within `reach` of the centre and inside [0, limit).
    Profile(double centre, double sigma, double reach, std::size_t limit) {
        const double low = std::max(0.0, std::floor(centre - reach + 0.5));
        const double high = std::min(static_cast<double>(limit) - 1, std::floor(centre + reach + 0.5));
        if (!(low <= high)) return;
        first_ = static_cast<std::size_t>(low);
        shares_.resize(static_cast<std::size_t>(high - low) + 1);
        const double unit = 1 / (sigma * std::numbers::sqrt2);
        double edge = std::erf((low - 0.5 - centre) * unit);
        for (std::size_t i = 0; i < shares_.size(); ++i) {
            const double next = std::erf((low + static_cast<double>(i) + 0.5 - centre) * unit);
            shares_[i] = static_cast<float>((next - edge) / 2);
            edge = next;
        }
    }

    std::size_t first() const { return first_; }
    const std::vector<float>& shares() const { return shares_; }

  private:
    std::size_t first_ = 0;
    std::vector<float> shares_;
};

/// Distance from the centre beyond which a pixel gets less than a tenth of an electron.
double reachOf(const StarSpot& star, double sigma) {
    const double peak = star.electrons / (2 * std::numbers::pi * sigma * sigma);
    return 1 + sigma * std::sqrt(2 * std::log(std::max(peak / 0.1, 1.0) + 1));
}

void addStar(const StarSpot& star, const SensorExposure& exposure, std::vector<float>& electrons) {
    const double reach = reachOf(star, exposure.sigma);
    const Profile columns(star.x, exposure.sigma, reach, exposure.width);
    const Profile rows(star.y, exposure.sigma, reach, exposure.height);
    for (std::size_t j = 0; j < rows.shares().size(); ++j) {
        float* row = electrons.data() + (rows.first() + j) * exposure.width + columns.first();
        const float light = static_cast<float>(star.electrons) * rows.shares()[j];
        for (std::size_t i = 0; i < columns.shares().size(); ++i) row[i] += light * columns.shares()[i];
    }
}

void addHotPixels(const SensorExposure& exposure, std::uint64_t seed, std::vector<float>& electrons) {
    constexpr std::uint64_t kOfTheSensor = 0x5E4504;  // apart from the frames' noise
    NoiseSource pattern(seed ^ kOfTheSensor);
    for (std::size_t i = 0; i < exposure.hotPixels; ++i) {
        const double place = pattern.uniform() * static_cast<double>(electrons.size());
        electrons[static_cast<std::size_t>(place)] +=
            static_cast<float>(2000 * std::pow(20, pattern.uniform()));
    }
}

/// The electrons of the window's pixels.
std::vector<float> gathered(const ReadWindow& window, std::size_t sensorWidth,
                            const std::vector<float>& electrons) {
    std::vector<float> bins(window.width * window.height, 0.0F);
    for (std::size_t y = 0; y < window.height * window.binY; ++y) {
        const float* from =
            electrons.data() + (window.top * window.binY + y) * sensorWidth + window.left * window.binX;
        float* to = bins.data() + y / window.binY * window.width;
        for (std::size_t x = 0; x < window.width; ++x)
            for (std::size_t i = 0; i < window.binX; ++i) to[x] += *from++;
    }
    return bins;
}

/// Reads the sensor out, noise and all.
class Readout {
  public:
    explicit Readout(const SensorExposure& exposure)
        : variance_(static_cast<float>(exposure.readNoise * exposure.readNoise)),
          countsPerElectron_(static_cast<float>(1 / exposure.gain)),
          offset_(static_cast<float>(exposure.bias) + 0.5F) {}

    std::uint16_t counts(float electrons, float gaussian) const {
        const float noisy = electrons + std::sqrt(electrons + variance_) * gaussian;
        return static_cast<std::uint16_t>(std::clamp(noisy * countsPerElectron_ + offset_, 0.0F, 65535.0F));
    }

  private:
    float variance_;
    float countsPerElectron_;
    float offset_;  // the bias and a half, so that cutting off the fraction rounds
};

constexpr std::size_t kPixelsPerBits = 4;

std::vector<std::uint16_t> readOut(const SensorExposure& exposure, const std::vector<float>& electrons,
                                   NoiseSource& noise) {
    const Readout readout(exposure);
    const float* steps = NoiseSource::normalSteps().data();
    std::vector<std::uint16_t> counts(electrons.size());
    for (std::size_t i = 0; i < counts.size(); i += kPixelsPerBits) {
        std::uint64_t bits = noise.bits();
        const std::size_t end = std::min(i + kPixelsPerBits, counts.size());
        for (std::size_t k = i; k < end; ++k, bits >>= 16U)
            counts[k] = readout.counts(electrons[k], steps[bits & 0xFFFFU]);
    }
    return counts;
}

}  // namespace

std::vector<std::uint16_t> drawFrame(const SensorExposure& exposure, const std::vector<StarSpot>& stars,
                                     NoiseSource& noise) {
    std::vector<float> electrons(exposure.width * exposure.height, static_cast<float>(exposure.sky));
    for (const StarSpot& star : stars) addStar(star, exposure, electrons);
    if (!electrons.empty()) addHotPixels(exposure, noise.seed(), electrons);
    if (exposure.window) electrons = gathered(*exposure.window, exposure.width, electrons);
    return readOut(exposure, electrons, noise);
}

std::size_t noiseOf(const SensorExposure& exposure) {
    const auto& window = exposure.window;
    const std::size_t pixels = window ? window->width * window->height : exposure.width * exposure.height;
    return (pixels + kPixelsPerBits - 1) / kPixelsPerBits;
}

}  // namespace vantrel::observatory
