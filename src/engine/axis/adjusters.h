// What the two adjusters of a mount look like in the camera, at a place of the sky.
#pragma once

#include <optional>

#include "engine/sky_geometry.h"

namespace vantrel::engine {

/// The azimuth adjuster turns the mount about the vertical, the altitude adjuster about the east-west line.
struct AdjusterView {
    // How far the field moves when the adjuster turns by 1.
    double azimuthShift = 0, altitudeShift = 0;
    /// Area between the two shifts: 1 at best, 0 where both knobs look the same or one shows nothing.
    double separability = 0;
    // How uncertain the adjuster's own angle is when the field's place is known to these sigmas; in their
    // unit. Infinite where it can't be read.
    double azimuthError = 0, altitudeError = 0;
};

/// For a field whose centre is measured to `centreSigma` in each direction and, if it is used, its roll to
/// `rollSigma`: near the zenith only the roll shows the azimuth.
AdjusterView adjustersAt(const HorizonPosition& place, double centreSigma,
                         std::optional<double> rollSigma = std::nullopt);

}  // namespace vantrel::engine
