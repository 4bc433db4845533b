#include "observatory/imaging/histogram.h"

#include <algorithm>
#include <cmath>

namespace vantrel::observatory {

HistogramAxis::HistogramAxis(const PixelStatistics& statistics)
    : median_(statistics.median),
      softness_(std::max({3 * statistics.deviation, 1e-3 * (statistics.highest - statistics.lowest),
                          1e-6 * std::abs(statistics.median), 1e-6})) {
    constexpr double kLeast = 10;  // softnesses on either side
    from_ = curved(std::min(statistics.lowest, median_ - kLeast * softness_));
    to_ = curved(std::max(statistics.highest, median_ + kLeast * softness_));
    const double room = 0.03 * (to_ - from_);
    from_ -= room;
    to_ += room;
}

double HistogramAxis::curved(double value) const { return std::asinh((value - median_) / softness_); }

double HistogramAxis::place(double value) const {
    return std::clamp((curved(value) - from_) / (to_ - from_), 0.0, 1.0);
}

double HistogramAxis::value(double place) const {
    return median_ + softness_ * std::sinh(from_ + std::clamp(place, 0.0, 1.0) * (to_ - from_));
}

std::vector<double> histogramOf(const PixelStatistics& statistics, const HistogramAxis& axis, int bins) {
    std::vector<double> counts(static_cast<std::size_t>(bins), 0.0);
    for (const float value : statistics.sample) {
        const auto bin = static_cast<int>(axis.place(static_cast<double>(value)) * bins);
        ++counts[static_cast<std::size_t>(std::clamp(bin, 0, bins - 1))];
    }
    const double fullest = std::log1p(*std::max_element(counts.begin(), counts.end()));
    for (double& count : counts) count = fullest > 0 ? std::log1p(count) / fullest : 0;
    return counts;
}

}  // namespace vantrel::observatory
