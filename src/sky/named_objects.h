// What observers call by name: bright stars and bright deep-sky objects. ICRS places at J2000.
#pragma once

#include <span>

#include "sky/sky_position.h"

namespace vantrel::sky {

struct NamedStar {
    const char* name;
    SkyPosition place;
};

struct DeepSkyObject {
    const char* name;
    SkyPosition place;
    double sizeArcmin;  ///< along its longer axis
};

/// By right ascension.
std::span<const NamedStar> namedStars();
/// Messier's by their numbers, then others.
std::span<const DeepSkyObject> deepSkyObjects();

}  // namespace vantrel::sky
