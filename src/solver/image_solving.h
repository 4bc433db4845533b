// The whole way from an image's stars to where it points, as far as what is known of it leads.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "fits/fits_image.h"
#include "platform/words.h"
#include "sky/star_catalog.h"
#include "solver/plate_solver.h"
#include "solver/star_finder.h"
#include "solver/star_patterns.h"

namespace vantrel::solver {

/// Gives the star patterns of the whole sky; asked for when an image is searched far from its start.
using PatternSource = std::function<std::shared_ptr<const StarPatterns>()>;

struct ImageClues {
    std::optional<sky::SkyPosition> start;  ///< about where it points, ICRS
    std::optional<double> radiusDeg;        ///< how far off that may be; left out, about a field
    std::vector<double> scales;             ///< to try, likeliest first; arcseconds per pixel
    double epochYear = 2026;                ///< of the exposure
};

/// Where the header says that the telescope was sent, what its optics make, and when. The radius is left out.
ImageClues cluesOf(const fits::FitsHeader& header);

/// Position and scale of world coordinates in the header, if there are any.
std::optional<ImageClues> formerSolution(const fits::FitsImage& image);

/// How far a start position may be off for the image to be solved around it.
double customaryOffset(const PlateGeometry& geometry);

struct SolvedImage {
    std::optional<SolvedPlate> solution;
    PlateGeometry geometry;  ///< with the scale that was found, or tried last
    platform::Words whyNot;  ///< without a solution: what the image lacks (see unsolved_reason.h)
};

/// Around the start with each of the scales. When none fits and the radius reaches farther than that, or
/// there is no start, within the radius by star patterns; without any scale, in fields 0.3 to 30 degrees
/// wide. `givenUp` is asked now and then; once it says so, nothing is found.
SolvedImage solveImage(const fits::FitsImage& image, const StarList& stars, const ImageClues& clues,
                       const sky::StarCatalog& catalog, const PatternSource& patterns,
                       const std::function<bool()>& givenUp = {});

}  // namespace vantrel::solver
