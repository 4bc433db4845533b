// Finds where an image points when nobody knows where to look.
//
// Triangles of each bright image star with brighter ones near it are looked up among the patterns of the
// whole sky. What a pattern proposes is checked against the other bright stars; what passes is solved as a
// plate around the proposed place, and the plate solver's verdict alone decides.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "solver/plate_solver.h"
#include "solver/star_patterns.h"

namespace vantrel::solver {

struct WideSettings {
    double scaleTolerance = 0.15;  ///< share by which the true scale may differ from the given one
    sky::SkyPosition start;        ///< places farther from here than the radius are left out
    double radiusDeg = 180;
    double epochYear = 2000;             ///< of the exposure
    double chanceLimitLog10 = -7;        ///< matches likelier than this to be chance are refused
    std::function<bool()> givenUp = {};  ///< asked for each star; nothing is found any more once it says so
};

struct WideSolution {
    SolvedPlate plate;
    PlateGeometry geometry;  ///< with the scale that was found
};

/// Image stars brightest first; the geometry's scale may be off by the tolerance. The catalogue is the one
/// that the plate is solved with. Empty when no place explains the image better than chance, having paid for
/// all places that were considered.
std::optional<WideSolution> searchWide(const PlateGeometry& geometry, std::span<const ImageStar> imageStars,
                                       const StarPatterns& patterns, const sky::StarCatalog& catalog,
                                       const WideSettings& settings);

/// The same for an image of unknown scale: fields 0.3 to 30 degrees wide are tried, the geometry's scale is
/// not looked at.
std::optional<WideSolution> searchWideAnyScale(const PlateGeometry& geometry,
                                               std::span<const ImageStar> imageStars,
                                               const StarPatterns& patterns, const sky::StarCatalog& catalog,
                                               const WideSettings& settings);

}  // namespace vantrel::solver
