// A made sky that goes deeper than Tycho-2: its stars around a place, and below them fainter ones strewn at
// random, as many as the sky has on the whole.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "sky/moving_star.h"
#include "sky/star_catalog.h"
#include "sky/tangent_wcs.h"

namespace vantrel::test {

/// Stars brighter than V in a square degree, beyond where Tycho-2 is complete. Towards the poles of the
/// Galaxy 14 are brighter than V 11.5 and 240 than 16, in its plane 74 and 4,700: counts grow by 10^0.28 a
/// magnitude there and 10^0.40 here (Allen, Astrophysical Quantities, 3rd ed., section 117).
inline double starsBrighter(double magnitude, double galacticLatitudeDeg) {
    const double plane = std::pow(std::cos(galacticLatitudeDeg * std::numbers::pi / 180), 4);
    return std::pow(10, 1.15 + 0.72 * plane + (0.28 + 0.12 * plane) * (magnitude - 11.5));
}

/// The north galactic pole stands at 192.85948, +27.12825 (J2000).
inline double galacticLatitudeDeg(sky::SkyPosition place) {
    return 90 - sky::separationDeg(place, {192.85948, 27.12825});
}

/// All stars of `tycho` within the radius of the place at the epoch 2000, and made ones down to `faintest`.
/// Those between 11 and 12.5, where Tycho-2 ends, are as many as both together ought to be.
inline std::vector<sky::MovingStar> deepSky(const sky::StarCatalog& tycho, sky::SkyPosition centre,
                                            double radiusDeg, double faintest, std::mt19937& random) {
    constexpr double kBin = 0.25;
    std::vector<sky::MovingStar> stars;
    std::vector<double> known;
    for (const auto& star : tycho.cone({.raDeg = centre.ra, .decDeg = centre.dec, .radiusDeg = radiusDeg})) {
        stars.push_back({star.raDeg, star.decDeg, star.magnitude});
        known.push_back(star.magnitude);
    }
    std::ranges::sort(known);
    const double area = 2 * std::numbers::pi * (1 - std::cos(radiusDeg * std::numbers::pi / 180)) *
                        std::pow(180 / std::numbers::pi, 2);
    const double latitude = galacticLatitudeDeg(centre);
    std::uniform_real_distribution<double> unit(0, 1);
    for (double bright = 11; bright < faintest; bright += kBin) {
        const auto before = [&](double m) {
            return static_cast<double>(std::ranges::lower_bound(known, m) - known.begin());
        };
        const double wanted =
            area * (starsBrighter(bright + kBin, latitude) - starsBrighter(bright, latitude));
        const double missing = wanted - (before(bright + kBin) - before(bright));
        for (int i = 0; i < static_cast<int>(missing); ++i) {
            const double away =
                std::acos(1 - unit(random) * (1 - std::cos(radiusDeg * std::numbers::pi / 180)));
            const double bearing = 2 * std::numbers::pi * unit(random);
            const double size = std::tan(away) * 180 / std::numbers::pi;
            const auto place =
                sky::fromTangentPlane({size * std::sin(bearing), size * std::cos(bearing)}, centre);
            stars.push_back({place.ra, place.dec, bright + kBin * unit(random)});
        }
    }
    return stars;
}

}  // namespace vantrel::test
