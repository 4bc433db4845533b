#include "solver/source_extractor.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

#include "solver/source_detection.h"

namespace vantrel::solver {

namespace {

constexpr int kMaxRaises = 6;  // of the threshold, doubled each time

struct Kernel {
    std::vector<float> weights;
    int side = 0;
    double noise = 0;  ///< noise of the smoothed image, from noise 1 in each pixel
};

Kernel kernelOf(std::vector<float> weights, int side) {
    const float sum = std::accumulate(weights.begin(), weights.end(), 0.0F);
    double squares = 0;
    for (float& w : weights) {
        w /= sum;
        squares += static_cast<double>(w) * static_cast<double>(w);
    }
    return {std::move(weights), side, std::sqrt(squares)};
}

Kernel smoothingKernel(double fwhm) {
    if (fwhm <= 0) return kernelOf({1, 2, 1, 2, 4, 2, 1, 2, 1}, 3);
    const double sigma = std::max(fwhm / 2.3548, 0.2);
    const int half = std::clamp(static_cast<int>(std::ceil(2.2 * sigma)), 1, 7);
    std::vector<float> weights;
    for (int y = -half; y <= half; ++y) {
        for (int x = -half; x <= half; ++x) {
            weights.push_back(static_cast<float>(std::exp(-(x * x + y * y) / (2 * sigma * sigma))));
        }
    }
    return kernelOf(std::move(weights), 2 * half + 1);
}

/// The noise of the smoothed image, from a sample of its pixels: where neighbouring pixels are correlated it
/// is larger than the kernel alone would leave. (Mean of the four fifths of values nearest to 0; see the
/// reduction.)
double smoothedNoise(std::span<const float> pixels, std::size_t width, std::size_t height,
                     const Kernel& kernel) {
    constexpr std::size_t kSamples = 6000;  // their noise is good to about a hundredth
    const auto side = static_cast<std::size_t>(kernel.side);
    if (width < side || height < side) return kernel.noise;
    const std::size_t columns = width - side + 1;
    const std::size_t places = columns * (height - side + 1);
    const std::size_t step = std::max<std::size_t>(1, places / kSamples) | 1U;
    std::vector<float> values;
    for (std::size_t place = step / 2; place < places; place += step) {
        const float* corner = pixels.data() + place / columns * width + place % columns;
        float sum = 0;
        for (std::size_t y = 0; y < side; ++y) {
            for (std::size_t x = 0; x < side; ++x)
                sum += kernel.weights[y * side + x] * corner[y * width + x];
        }
        if (!std::isnan(sum)) values.push_back(std::abs(sum));
    }
    const auto most = values.begin() + static_cast<std::ptrdiff_t>(values.size() * 4 / 5);
    std::nth_element(values.begin(), most, values.end());
    const double mean = std::accumulate(values.begin(), most, 0.0) /
                        static_cast<double>(std::max<std::ptrdiff_t>(1, most - values.begin()));
    return std::max(kernel.noise, mean / 0.5586);
}

/// Whether any pixel has no value; compilers turn this into vector code.
bool hasGaps(std::span<const float> pixels) {
    int gaps = 0;
    for (const float v : pixels) gaps |= static_cast<int>(std::isnan(v));
    return gaps != 0;
}

/// Where there is no value there is nothing but background.
std::vector<float> withoutGaps(std::span<const float> pixels) {
    std::vector<float> filled(pixels.begin(), pixels.end());
    std::replace_if(
        filled.begin(), filled.end(), [](float v) { return std::isnan(v); }, 0.0F);
    return filled;
}

}  // namespace

std::vector<Source> extractSources(std::span<const float> pixels, std::size_t width, std::size_t height,
                                   const ExtractionSettings& settings) {
    std::vector<float> filled;
    if (hasGaps(pixels)) filled = withoutGaps(pixels);
    const Kernel kernel = smoothingKernel(settings.filterFwhm);
    DetectionTask task{filled.empty() ? pixels : std::span<const float>(filled),
                       width,
                       height,
                       kernel.weights,
                       kernel.side,
                       settings.sigma * smoothedNoise(pixels, width, height, kernel),
                       settings.minimumPixels};
    std::optional<std::vector<Source>> found;
    for (int raise = 0; raise < kMaxRaises && !found; ++raise) {
        found = detectSources(task);
        task.threshold *= 2;
    }
    std::vector<Source> sources = std::move(found).value_or(std::vector<Source>());
    const auto brighter = [](const Source& a, const Source& b) { return a.flux > b.flux; };
    std::sort(sources.begin(), sources.end(), brighter);
    if (sources.size() > settings.atMost) sources.resize(settings.atMost);
    return sources;
}

}  // namespace vantrel::solver
