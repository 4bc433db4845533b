// A place on the sky.
#pragma once

namespace vantrel::sky {

/// Right ascension in [0, 360) and declination, both in degrees.
struct SkyPosition {
    double ra = 0;
    double dec = 0;
};

}  // namespace vantrel::sky
