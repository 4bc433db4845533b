// V from the photographic colours that surveys of plates measured.
#pragma once

#include <optional>

namespace vantrel::catalogs {

/// V lies between red and blue as it does for the Sun (B - V 0.65, V - R 0.36: Cox, Allen's Astrophysical
/// Quantities, 4th ed., section 14.2); where one is missing, the other stands for it.
inline std::optional<double> visualMagnitude(std::optional<double> red, std::optional<double> blue) {
    if (red && blue) return *red + 0.36 * (*blue - *red);
    return red ? red : blue;
}

}  // namespace vantrel::catalogs
