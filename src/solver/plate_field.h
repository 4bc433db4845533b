// One plate's solving job: the stars of the image and the stars that the catalogue has around it.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "sky/star_catalog.h"
#include "sky/tangent_wcs.h"
#include "sky/vector3.h"
#include "solver/star_finder.h"
#include "solver/star_grid.h"

namespace vantrel::solver {

struct PlateGeometry {
    double width = 0;  ///< pixels
    double height = 0;
    double scaleX = 0;  ///< arcseconds per pixel, positive, as far as known (within 15 %)
    double scaleY = 0;
    double grain = 1;  ///< see StarList

    sky::PixelPosition centre() const { return {(width - 1) / 2, (height - 1) / 2}; }
    double diagonalDeg() const;
    /// What the catalogue's positions are likely to be wrong by, pixels.
    double catalogueError() const;
    /// What star positions in the image are likely to be wrong by, pixels.
    double positionError() const;
    /// Relative error of lengths in the image for want of a lens model: small telescopes have none to speak
    /// of.
    double lensError() const;
};

/// The places of stars in the image.
std::vector<PlanePoint> pointsOf(std::span<const ImageStar> stars);

class PlateField {
  public:
    /// Image stars and catalogue stars brightest first.
    PlateField(const PlateGeometry& geometry, std::span<const ImageStar> imageStars,
               std::span<const sky::CatalogStar> catalogStars);

    const PlateGeometry& geometry() const { return geometry_; }
    std::size_t imageCount() const { return image_.points().size(); }
    const StarGrid& image() const { return image_; }
    sky::PixelPosition pixel(std::size_t i) const { return {image_.points()[i].x, image_.points()[i].y}; }
    /// Of an image star's place along each axis, pixels; 0 where nothing is known of it.
    double placeError(std::size_t i) const { return placeErrors_[i]; }
    std::span<const sky::Vector3> catalogue() const { return catalogue_; }
    /// Of a catalogue star.
    double magnitude(std::size_t i) const { return magnitudes_[i]; }

  private:
    PlateGeometry geometry_;
    StarGrid image_;
    std::vector<double> placeErrors_;
    std::vector<sky::Vector3> catalogue_;
    std::vector<double> magnitudes_;
};

}  // namespace vantrel::solver
