// Finds where a plate points, from the pattern of its stars.
//
// Triangles of bright image stars, described by the ratios of their sides, are looked for among the triangles
// of the catalogue's stars. Sides are angles on the sphere, so wide fields need no projection centre. Each
// pair of alike triangles is a hypothesis (scale, orientation, mirrored or not); those that put further image
// stars onto catalogue stars are refined, and the first that can't be chance is the answer.
#pragma once

#include <optional>

#include "solver/plate_refinement.h"

namespace vantrel::solver {

struct MatchSettings {
    double scaleTolerance = 0.15;  ///< share by which the true scale may differ from the given one
    double chanceLimitLog10 = -7;  ///< matches likelier than this to be chance are refused
    double maximumResidualArcsec = 0;
    std::size_t minimumMatches = 0;  ///< 0 leaves it to the verdict
};

/// The plate's model, or nothing when no hypothesis holds. The field's catalogue stars must lie around
/// `centre` not farther than `radiusDeg` (at most 60).
std::optional<RefinedPlate> matchPlate(const PlateField& field, sky::SkyPosition centre, double radiusDeg,
                                       const MatchSettings& settings);

}  // namespace vantrel::solver
