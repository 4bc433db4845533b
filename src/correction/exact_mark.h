// Where a star must go in the picture so that an adjuster is right: by full rotations, from any star, at any
// declination. The written mark (correction_target.h) stands beside it.
#pragma once

#include <optional>

#include <Eigen/Core>

#include "engine/axis/axis_position.h"
#include "engine/ports.h"

namespace vantrel::correction {

/// A solved picture as a map between pixels and directions. Directions are of date: x to the meridian on the
/// equator, y to the east, z to the north pole, at the plate's sidereal time (hours).
class PicturedSky {
  public:
    /// `centre` is the pixel of the solved position. Nothing when the matrix is singular or not finite.
    static std::optional<PicturedSky> of(const engine::PlateSolution& plate,
                                         const engine::PixelPosition& centre, double lst);

    Eigen::Vector3d direction(const engine::PixelPosition& pixel) const;
    /// Nothing for what lies a quarter of the sky away, or farther.
    std::optional<engine::PixelPosition> pixel(const Eigen::Vector3d& direction) const;

    engine::EquatorialPosition place(const Eigen::Vector3d& direction) const;
    Eigen::Vector3d direction(const engine::EquatorialPosition& place) const;

  private:
    PicturedSky() = default;

    Eigen::Matrix3d frame_;  // east, north and outwards at the centre
    Eigen::Matrix2d scale_;  // radians a pixel
    engine::PixelPosition centre_;
    double lst_ = 0;
};

/// What an adjuster still has to do: a turn of the mount about this line, as a rotation vector in radians.
using AdjusterTurn = Eigen::Vector3d;

/// About the vertical, until the axis lies in the meridian.
AdjusterTurn azimuthTurn(const engine::PolarError& error, double latitude);

/// About the base's hinge, until the axis is as high as the pole. The hinge lies east-west once the azimuth
/// is right; before, it is off by as much as the axis.
AdjusterTurn elevationTurn(const engine::PolarError& error, double latitude, bool azimuthIsRight);

/// The pixel on which the star stands once the mount has made this turn. The star's direction is the true
/// one; the air of the site lifts it.
std::optional<engine::PixelPosition> exactMark(const PicturedSky& picture, const Eigen::Vector3d& star,
                                               const AdjusterTurn& turn, const engine::Site& site);

}  // namespace vantrel::correction
