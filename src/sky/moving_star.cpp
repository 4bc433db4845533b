#include "sky/moving_star.h"

#include <algorithm>
#include <cmath>

#include "sky/cone.h"
#include "sky/vector3.h"

namespace vantrel::sky {

namespace {

constexpr double kMasToDeg = 1 / 3.6e6;

}  // namespace

MovingStar carried(MovingStar star, double years) {
    const double parallel = std::max(1e-6, std::cos(star.decDeg * kDegree));
    star.raDeg = wrappedDeg(star.raDeg + star.motionRaMas * years * kMasToDeg / parallel);
    star.decDeg = std::clamp(star.decDeg + star.motionDecMas * years * kMasToDeg, -90.0, 90.0);
    return star;
}

}  // namespace vantrel::sky
