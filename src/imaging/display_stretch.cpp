#include "imaging/display_stretch.h"

#include <algorithm>
#include <cmath>

namespace vantrel::imaging {
namespace {

/// The value that this share of the sample lies below.
double quantile(const std::vector<float>& sorted, double share) {
    return static_cast<double>(
        sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))]);
}

/// What the sample's numbers can tell apart: counts, or a part of a relative scale.
double leastNoise(const PixelStatistics& statistics) {
    constexpr double kOfScale = 1e-6;
    const bool counts = std::max(std::abs(statistics.lowest), std::abs(statistics.highest)) > 2;
    return counts ? std::max(1.0, kOfScale * std::abs(statistics.median)) : kOfScale;
}

}  // namespace

Stretch automaticStretch(const PixelStatistics& statistics) {
    if (statistics.sample.empty()) return {0, 1};
    // The lower half of the sky's noise: stars don't touch it. One sigma lies at 15.87 %.
    const double sky = statistics.median;
    const double sigma = std::max(leastNoise(statistics), sky - quantile(statistics.sample, 0.1587));
    return {sky - 2 * sigma, std::max(sky + 15 * sigma, quantile(statistics.sample, 0.999))};
}

}  // namespace vantrel::imaging
