#include "correction/stars/stripe_peak.h"

#include <algorithm>
#include <cmath>

#include "platform/errors.h"

namespace vantrel::correction {
namespace {

std::size_t smoothingWidth(std::size_t elements) {
    const auto range = static_cast<double>(elements - 1);
    const double width = range < 20 ? std::nearbyint(range / 4) : 5;
    if (width == 0) throw platform::runTimeError(platform::error_number::kDivisionByZero);
    return static_cast<std::size_t>(width);
}

std::vector<double> smoothed(const std::vector<double>& profile, std::size_t width) {
    std::vector<double> means(profile.size() - width + 1);
    for (std::size_t i = 0; i < means.size(); ++i) {
        double sum = 0;
        for (std::size_t j = 0; j < width; ++j) sum += profile[i + j];
        means[i] = sum / static_cast<double>(width);
    }
    return means;
}

}  // namespace

std::optional<double> Peak(const std::vector<double>& profile) {
    if (profile.size() < 2) return std::nullopt;
    const std::vector<double> means = smoothed(profile, smoothingWidth(profile.size()));
    if (means.size() < 2) return std::nullopt;

    const double slope = (means.back() - means.front()) / static_cast<double>(means.size() - 1);
    double lowest = 0;  // the residual at both ends
    double highest = 0;
    for (std::size_t i = 0; i < means.size(); ++i) {
        const double residual = means[i] - (means.front() + slope * static_cast<double>(i));
        lowest = std::min(lowest, residual);
        highest = std::max(highest, residual);
    }
    return highest - lowest;
}

}  // namespace vantrel::correction
