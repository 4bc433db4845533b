#include "imaging/pixel_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace vantrel::imaging {
namespace {

constexpr double kSampleSide = 200;

/// Odd, so that every colour of a sensor with a colour mosaic comes into the sample.
std::size_t stepFor(const platform::ImageArray& image) {
    const double pixels = static_cast<double>(image.width()) * static_cast<double>(image.height());
    return static_cast<std::size_t>(std::sqrt(pixels) / kSampleSide) | 1U;
}

/// Spreads the rows' first columns, so that no pattern of the image is met in step (Knuth's multiplicative
/// hash).
std::size_t scattered(std::size_t row) { return (row * 2654435761U >> 16U) & 0xFFFFU; }

/// Marks in an image of 16 bits stand at their upper end.
template <typename Pixel>
double highestSample() {
    return std::is_same_v<Pixel, std::uint16_t> ? std::numeric_limits<std::uint16_t>::max() : kMarkValue;
}

std::vector<float> sampleOf(const platform::ImageArray& image) {
    const std::size_t step = stepFor(image);
    std::vector<float> sample;
    std::visit(
        [&](const auto& pixels) {
            using Pixel = typename std::decay_t<decltype(pixels)>::value_type;
            const double highest = highestSample<Pixel>();
            for (std::size_t y = step / 2; y < image.height(); y += step)
                for (std::size_t x = scattered(y) % step; x < image.width(); x += step) {
                    const auto value = static_cast<float>(pixels[y * image.width() + x]);
                    if (std::isfinite(value) && static_cast<double>(value) < highest) sample.push_back(value);
                }
        },
        image.pixels());
    return sample;
}

double medianDeviation(const std::vector<float>& sample, double median) {
    std::vector<double> distances;
    distances.reserve(sample.size());
    for (const float value : sample) distances.push_back(std::abs(static_cast<double>(value) - median));
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    return *middle;
}

}  // namespace

PixelStatistics statisticsOf(const platform::ImageArray& image) {
    constexpr double kOfGaussianNoise = 1.4826;
    PixelStatistics statistics;
    statistics.sample = sampleOf(image);
    const auto& sample = statistics.sample;
    if (sample.empty()) return statistics;
    std::sort(statistics.sample.begin(), statistics.sample.end());
    statistics.lowest = static_cast<double>(sample.front());
    statistics.highest = static_cast<double>(sample.back());
    statistics.median = static_cast<double>(sample[sample.size() / 2]);
    statistics.deviation = kOfGaussianNoise * medianDeviation(sample, statistics.median);
    return statistics;
}

}  // namespace vantrel::imaging
