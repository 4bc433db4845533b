#include "imaging/histogram.h"

#include <algorithm>
#include <cmath>

namespace vantrel::imaging {

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
    // Counts are whole numbers; each stands for the values around it, so that no bin is left out.
    const auto binOf = [&](double value) {
        return std::clamp(static_cast<int>(axis.place(value) * bins), 0, bins - 1);
    };
    const auto& sample = statistics.sample;
    for (std::size_t i = 0; i < sample.size();) {
        const auto end = static_cast<std::size_t>(
            std::upper_bound(sample.begin() + static_cast<std::ptrdiff_t>(i), sample.end(), sample[i]) -
            sample.begin());
        const auto value = static_cast<double>(sample[i]);
        const bool whole = value == std::floor(value) && end < sample.size() && sample[end] == sample[i] + 1;
        const int first = binOf(value);
        const int last = whole ? std::max(first + 1, binOf(value + 1)) : first + 1;
        for (int bin = first; bin < std::min(last, bins); ++bin)
            counts[static_cast<std::size_t>(bin)] += static_cast<double>(end - i) / (last - first);
        i = end;
    }
    const double fullest = std::log1p(*std::max_element(counts.begin(), counts.end()));
    for (double& count : counts) count = fullest > 0 ? std::log1p(count) / fullest : 0;
    return counts;
}

}  // namespace vantrel::imaging
