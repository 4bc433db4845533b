// A part of the sky between two right ascensions and two declinations.
#pragma once

#include <algorithm>
#include <cmath>

#include "sky/cone.h"

namespace vantrel::catalogs {

/// Degrees. From raMin eastwards to raMax, which may lie beyond the zero of right ascension.
struct SkyBox {
    double raMin = 0;
    double raMax = 0;
    double decMin = 0;
    double decMax = 0;

    /// False only when the circle and the box have no place in common.
    bool mayTouch(double raDeg, double decDeg, double radiusDeg) const {
        if (decMax < decDeg - radiusDeg || decMin > decDeg + radiusDeg) return false;
        const double width = raMax > raMin ? raMax - raMin : raMax - raMin + 360;
        const double apart = std::abs(std::remainder(raMin + width / 2 - raDeg, 360.0));
        return apart <= width / 2 + sky::raReachDeg(decDeg, radiusDeg);
    }
};

}  // namespace vantrel::catalogs
