// The astrometric engine: from the stars of an image to where it points.
//
// In order: FitsImage::open, findStars, searchArea, StarCatalog::cone with it, solvePlate. Everything is ICRS
// (J2000); who wants the equinox of date turns start position and solution himself.
#pragma once

#include <optional>
#include <span>

#include "sky/star_catalog.h"
#include "solver/plate_field.h"
#include "solver/plate_matcher.h"
#include "solver/solved_plate.h"

namespace vantrel::solver {

/// The circle of sky in which the image's stars can lie.
struct SearchArea {
    sky::SkyPosition centre;
    double radiusDeg = 0;
    std::size_t maxStars = 0;  ///< of the catalogue's brightest, so many are of use

    sky::ConeQuery query(double epochYear, double faintestMagnitude) const;
};

/// The area around a start position that may be off by `offsetDeg`, when the image holds so many stars.
SearchArea searchArea(const PlateGeometry& geometry, sky::SkyPosition start, double offsetDeg,
                      std::size_t imageStars);

/// Solves the plate: image stars and catalogue stars brightest first, the latter those of the area. Empty
/// when no position in the area explains the image better than chance.
std::optional<SolvedPlate> solvePlate(const PlateGeometry& geometry, std::span<const ImageStar> imageStars,
                                      const SearchArea& area, std::span<const sky::CatalogStar> catalogStars,
                                      const MatchSettings& settings);

/// What a plate tells that has been recognised: fitted once more with all stars of the image.
SolvedPlate finishedPlate(const PlateField& field, const RefinedPlate& found, double maximumResidualArcsec);

/// The solution as world coordinates for a header: reference pixel at the image's centre, linear terms only.
sky::TangentWcs wcsOf(const SolvedPlate& solution, const PlateGeometry& geometry);

}  // namespace vantrel::solver
