// A star with its proper motion, as catalogues list them.
#pragma once

namespace vantrel::sky {

struct MovingStar {
    double raDeg = 0;  ///< ICRS
    double decDeg = 0;
    double magnitude = 0;     ///< about Johnson V
    double motionRaMas = 0;   ///< mas a year along the parallel (with cos Dec)
    double motionDecMas = 0;  ///< mas a year
};

/// No star moves farther in a year (Barnard's star: 10.4").
inline constexpr double kFastestDegPerYear = 10.5 / 3600;

/// The star `years` later; right ascension comes back in [0, 360).
MovingStar carried(MovingStar star, double years);

}  // namespace vantrel::sky
