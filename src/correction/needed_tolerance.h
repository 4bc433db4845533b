// How far from the pole the axis may be before the operator's pictures show it: from his optics and
// exposures.
#pragma once

#include <optional>

#include "engine/ports.h"
#include "platform/words.h"

namespace vantrel::correction {

/// The pictures that the mount is aligned for.
struct PlannedPictures {
    double exposure = 0;  // seconds
    bool guided = false;
    double declination = 0;               // degrees
    double fromGuideStar = 0;             // degrees, from there to the farthest corner
    std::optional<double> focalLength{};  // millimetres
    std::optional<double> pixel{};        // micrometres
};

struct NeededTolerance {
    /// Arc-minutes; nothing where something is missing.
    std::optional<double> arcMinutes;
    platform::Words words;  // "1.9': 120 s unguided, 1.0″ of drift"
};

/// Unguided, the drift at the worst place may be one pixel, or one arc-second where the pixels aren't known.
/// Guided, the field turns about the guide star: the trail in the farthest corner may be one pixel long.
NeededTolerance neededTolerance(const PlannedPictures& pictures);

/// As the operator wrote them: focal length and pixels in the pixel scale calculator, the rest in the
/// Options.
PlannedPictures plannedPictures(engine::SettingsPort& settings);

}  // namespace vantrel::correction
