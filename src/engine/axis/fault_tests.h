// The patterns that faults make in the observations, tested one by one. For this folder's own use.
#pragma once

#include <vector>

#include "engine/axis/rotation_fit.h"
#include "engine/axis/verdict.h"

namespace vantrel::engine {

/// Every fault at every plate that can be told from the others, in no order: what lasts from the second plate
/// on is the first one's own fault with the other sign, what lasts from the last is that one's own. Faults
/// that look like another axis are left out.
std::vector<Suspicion> testedFaults(const std::vector<Sighting>& sightings, const RotationFit& fit);

/// Verdict::hiddenMove, by what was tested. What a fault that isn't noticed does to the result is what Baarda
/// calls external reliability.
double hiddenMove(const std::vector<Sighting>& sightings, const RotationFit& fit,
                  const std::vector<Suspicion>& tested);

}  // namespace vantrel::engine
