#include "observatory/imaging/display_stretch.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vantrel::observatory {
namespace {

/// Finite pixels from short runs spread evenly over the image: neighbours cost no more than one of them.
std::vector<float> sample(const platform::ImageArray& image) {
    constexpr std::size_t kRun = 32;
    constexpr std::size_t kRuns = 1500;
    std::vector<float> values;
    values.reserve(2 * kRun * kRuns);
    std::visit(
        [&](const auto& pixels) {
            const std::size_t step = std::max(kRun, pixels.size() / kRuns) | 1U;  // odd: no column stands out
            for (std::size_t start = 0; start < pixels.size(); start += step)
                for (std::size_t i = start; i < std::min(start + kRun, pixels.size()); ++i) {
                    const auto value = static_cast<float>(pixels[i]);
                    if (std::isfinite(value)) values.push_back(value);
                }
        },
        image.pixels());
    return values;
}

/// The value that this share of the values lies below; reorders them.
double quantile(std::vector<float>& values, double share) {
    const auto nth = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(nth), values.end());
    return values[nth];
}

}  // namespace

Stretch automaticStretch(const platform::ImageArray& image) {
    std::vector<float> values = sample(image);
    if (values.empty()) return {0, 1};
    // The lower half of the sky's noise: stars don't touch it. One sigma lies at 15.87 %.
    const double sky = quantile(values, 0.5);
    const double sigma = std::max(1.0, sky - quantile(values, 0.1587));
    return {sky - 2 * sigma, std::max(sky + 15 * sigma, quantile(values, 0.999))};
}

}  // namespace vantrel::observatory
