// Small sums that the measuring of stars and skies share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace vantrel::correction {

inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

inline double square(double value) { return value * value; }

/// The lower of the two in the middle, where there are two. There must be a value.
inline double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() - 1) / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace vantrel::correction
