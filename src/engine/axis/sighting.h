// A plate as the fit sees it: a camera's attitude in the sky that the air shows, in radians, and what weight
// its numbers have. For this folder's own use.
//
// The frame is that of DirectionCosines: x to the meridian on the equator, y to the east, z to the north
// pole.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include <Eigen/Core>

#include "engine/axis/axis_position.h"
#include "engine/axis/fit_settings.h"
#include "engine/axis/plate.h"

namespace vantrel::engine {

class Sighting {
  public:
    /// Empty when a number isn't finite or the covariance has no inverse.
    static std::optional<Sighting> of(const Plate& plate, const Site& site, const FitSettings& settings);

    /// Columns east, north and outwards where the plate is seen. The air lifts it by (1 + `airExcess`) of
    /// what it should. It turns the whole frame about the horizontal, since a plate's angle to the vertical
    /// stays: what else refraction does to a field is a stretch, which a position angle as in
    /// positionAngleOfRows() doesn't feel.
    Eigen::Matrix3d frame(double airExcess) const;

    /// Columns: the camera's line at its position angle, square to it, and outwards, as the air shows them.
    Eigen::Matrix3d attitude() const;

    /// The rotation by which the air has turned the frame.
    const Eigen::Vector3d& lift() const { return lift_; }

    /// The rotation by which the tube may have drooped, one sigma; the same sigma for all plates together.
    const Eigen::Vector3d& sag() const { return sag_; }

    const std::optional<double>& positionAngle() const { return positionAngle_; }
    const std::optional<double>& reading() const { return reading_; }

    /// Two numbers for the centre, one for the roll if it is used.
    Eigen::Index size() const { return positionAngle_ ? 3 : 2; }

    /// Divides (east, north and position angle) by their uncertainty, so that each has sigma 1 and is free of
    /// the others.
    Eigen::VectorXd weighted(const Eigen::Vector3d& values) const;
    double weightedReading(double value) const { return value / readingSigma_; }

  private:
    Eigen::Matrix3d trueFrame_;
    Eigen::Vector3d lift_;
    Eigen::Vector3d sag_;
    std::optional<double> positionAngle_;
    std::optional<double> reading_;
    Eigen::MatrixXd root_;  // of the covariance: lower triangle
    double readingSigma_ = 1;
};

/// A rotation by a rotation vector.
Eigen::Matrix3d rotation(const Eigen::Vector3d& vector);

/// East, north and position angle of what is seen, when the camera in this frame is turned by a small
/// rotation.
Eigen::Vector3d seenOf(const Eigen::Vector3d& rotation, const Eigen::Matrix3d& frame);

/// Empty when any of them can't be used.
std::optional<std::vector<Sighting>> sightingsOf(std::span<const Plate> plates, const Site& site,
                                                 const FitSettings& settings);

/// Directions of the zenith and of a place, given in hours and degrees.
Eigen::Vector3d zenith(double latitude);
Eigen::Vector3d directionOf(double hourAngle, double declination);

inline constexpr double kArcsecond = 3.14159265358979 / 648'000;  // in radians

}  // namespace vantrel::engine
