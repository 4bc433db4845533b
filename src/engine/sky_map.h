// The sky as a map of how well a measurement would go where.
#pragma once

#include <optional>
#include <vector>

#include "engine/axis/preflight.h"
#include "platform/drawing.h"

namespace vantrel::engine {

/// The zenith in the middle, the horizon at the edge, north up and east to the left, as one looks up. A dot
/// for each place: the larger, the more certain the axis, and green where that is better than 5" (red beyond
/// 30"); hollow where the two adjusters can hardly be told apart. A cross for each plate ahead, a ring around
/// the proposal.
platform::Drawing skyMap(const std::vector<StartingPlace>& places, const Horizon& horizon,
                         const std::vector<Preflight::PlateAhead>& plates,
                         const std::optional<StartingPlace>& proposal);

}  // namespace vantrel::engine
