#include "solver/plate_solver.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "solver/distortion_fit.h"

namespace vantrel::solver {

namespace {

constexpr double kScaleMargin = 1.15;        // by which a told scale may be wrong
constexpr std::size_t kStarsPerField = 250;  // of the catalogue: more than a picture needs to be placed
constexpr std::size_t kStarsAtMost = 8000;   // in the whole area, which bounds what matching costs
constexpr std::size_t kFinalImageStars =
    2000;  // more add nothing to the fit that the catalogue's errors leave

double capArea(double radiusDeg) { return 2 * std::numbers::pi * (1 - std::cos(radiusDeg * sky::kDegree)); }

/// One more fit with all stars of the image, which the search had no need of.
RefinedPlate refinedWithAll(const PlateField& field, const RefinedPlate& plate,
                            double maximumResidualArcsec) {
    RefinementSettings all;
    all.imageStars = kFinalImageStars;
    all.firstTolerance = std::max(2.0 * field.geometry().positionError(), 5 * plate.rmsPixels);
    all.maximumResidualArcsec = maximumResidualArcsec;
    all.weighted = true;
    const auto better = refinePlate(field, plate.model, all);
    // Stars that stand beside their places weigh less now, so one or the other may fall out.
    return better && better->matched + 1 + plate.matched / 10 >= plate.matched ? *better : plate;
}

}  // namespace

sky::ConeQuery SearchArea::query(double epochYear, double faintestMagnitude) const {
    return {.raDeg = centre.ra,
            .decDeg = centre.dec,
            .radiusDeg = radiusDeg,
            .epochYear = epochYear,
            .faintestMagnitude = faintestMagnitude,
            .maxStars = maxStars,
            .brightestFirst = true};
}

SearchArea searchArea(const PlateGeometry& geometry, sky::SkyPosition start, double offsetDeg,
                      std::size_t imageStars) {
    const double radius = std::min(geometry.diagonalDeg() / 2 * kScaleMargin + offsetDeg, 60.0);
    const double field = geometry.width * geometry.height * geometry.scaleX * geometry.scaleY *
                         sky::kArcsecond * sky::kArcsecond;
    const double wanted = static_cast<double>(std::clamp<std::size_t>(2 * imageStars, 60, kStarsPerField)) *
                          std::max(1.0, capArea(radius) / field);
    return {{start.ra, std::clamp(start.dec, -90.0, 90.0)},
            radius,
            std::min(static_cast<std::size_t>(wanted), kStarsAtMost)};
}

std::optional<SolvedPlate> solvePlate(const PlateGeometry& geometry, std::span<const ImageStar> imageStars,
                                      const SearchArea& area, std::span<const sky::CatalogStar> catalogStars,
                                      const MatchSettings& settings) {
    const PlateField field(geometry, imageStars, catalogStars);
    const auto found = matchPlate(field, area.centre, area.radiusDeg, settings);
    if (!found) return std::nullopt;
    return finishedPlate(field, *found, settings.maximumResidualArcsec);
}

SolvedPlate finishedPlate(const PlateField& field, const RefinedPlate& found, double maximumResidualArcsec) {
    const RefinedPlate plate = refinedWithAll(field, found, maximumResidualArcsec);
    SolvedPlate solution;
    solution.centre = plate.model.toSky(field.geometry().centre());
    solution.cd = plate.model.matrix();
    solution.orientation = orientationOf(solution.cd);
    solution.matched = plate.matched;
    solution.residualArcsec = plate.meanResidualArcsec;
    solution.order = plate.model.order();
    solution.centreErrorArcsec = plate.errors.centreArcsec;
    solution.rollErrorDeg = plate.errors.rollDeg;
    solution.stars.reserve(plate.pairs.size());
    std::vector<StarPair> pairs;
    pairs.reserve(plate.pairs.size());
    for (const RefinedPlate::Pair& pair : plate.pairs) {
        const sky::PixelPosition at = field.pixel(pair.image);
        solution.stars.push_back({at.x, at.y, field.magnitude(pair.catalogue)});
        pairs.push_back({at, field.catalogue()[pair.catalogue], pair.weight});
    }
    solution.distortion = provenDistortion(plate.model, pairs, field.geometry());
    return solution;
}

sky::TangentWcs wcsOf(const SolvedPlate& solution, const PlateGeometry& geometry) {
    sky::TangentWcs wcs{solution.centre, geometry.centre()};
    std::copy(solution.cd.begin(), solution.cd.end(), wcs.cd);
    return wcs;
}

}  // namespace vantrel::solver
