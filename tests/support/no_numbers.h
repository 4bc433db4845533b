// Values that a pixel may have without being a number.
#pragma once

#include <limits>

namespace vantrel::test {

inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

}  // namespace vantrel::test
