#include "hosts/mount_position.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantrel::hosts {

double separation(const MountPosition& a, const MountPosition& b) {
    // The haversine formula, which is exact for small angles as well.
    constexpr double kDegree = std::numbers::pi / 180;
    const double dec = std::sin((a.declination - b.declination) / 2 * kDegree);
    const double ra = std::sin((a.rightAscension - b.rightAscension) / 2 * 15 * kDegree);
    const double square =
        dec * dec + std::cos(a.declination * kDegree) * std::cos(b.declination * kDegree) * ra * ra;
    return 2 * std::asin(std::sqrt(std::min(1.0, square))) / kDegree;
}

}  // namespace vantrel::hosts
