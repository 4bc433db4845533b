#include "solver/plate_field.h"

#include <algorithm>
#include <cmath>

namespace vantrel::solver {

namespace {

using sky::kDegree;

// Generous, since they decide what is looked for, not what is fitted.
constexpr double kCatalogueErrorArcsec = 0.25;  // Tycho-2's faint stars after some thirty years of motion
constexpr double kCentroidErrorPixels = 0.5;
constexpr double kCentroidErrorGrains = 0.15;  // where places come from binned or trailed light

}  // namespace

std::vector<PlanePoint> pointsOf(std::span<const ImageStar> stars) {
    std::vector<PlanePoint> points;
    points.reserve(stars.size());
    for (const ImageStar& star : stars) points.push_back({star.x, star.y});
    return points;
}

double PlateGeometry::diagonalDeg() const {
    const double x = std::tan(width * scaleX / 2 * sky::kArcsecond);
    const double y = std::tan(height * scaleY / 2 * sky::kArcsecond);
    return 2 * std::atan(std::hypot(x, y)) / kDegree;
}

double PlateGeometry::catalogueError() const { return kCatalogueErrorArcsec / std::sqrt(scaleX * scaleY); }

double PlateGeometry::positionError() const {
    return std::hypot(kCentroidErrorPixels, kCentroidErrorGrains * grain, catalogueError());
}

double PlateGeometry::lensError() const {
    return 0.0005 + 0.006 * std::min(1.0, diagonalDeg() * diagonalDeg() / 900);
}

PlateField::PlateField(const PlateGeometry& geometry, std::span<const ImageStar> imageStars,
                       std::span<const sky::CatalogStar> catalogStars)
    : geometry_(geometry), image_(pointsOf(imageStars)) {
    placeErrors_.reserve(imageStars.size());
    for (const ImageStar& star : imageStars) placeErrors_.push_back(star.error);
    catalogue_.reserve(catalogStars.size());
    magnitudes_.reserve(catalogStars.size());
    for (const sky::CatalogStar& star : catalogStars) {
        catalogue_.push_back(sky::direction(star.raDeg * kDegree, star.decDeg * kDegree));
        magnitudes_.push_back(star.magnitude);
    }
}

}  // namespace vantrel::solver
