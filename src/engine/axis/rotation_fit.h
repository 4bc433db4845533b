// The mechanics behind the estimate: a camera that is carried round a fixed axis, fitted to what plates and
// mount say. For this folder's own use; the face to the outside is least_squares.h.
//
// The camera's attitude at plate i is R(axis, turn_i) times its attitude at the first plate, R being the
// rotation about the axis's northern end. The mount's hour angle there is `zero` - turn_i.
//
// Unknowns, and the columns of the Jacobian in this order:
//   2  the axis: a small rotation along two directions square to it
//   2  the first plate's centre (declination and hour angle together); 3 with its roll, when roll is used
//   n-1 turns from the first plate to each other one
//   1  zero of the mount's hour angles, when readings are used
//   1  excess of the refraction over the model's, when there is air and it is uncertain; it has an
//      observation of its own: 0 with that uncertainty
// Observations, and the rows: east, north (and position angle) of each plate, the readings, the air.
#pragma once

#include <optional>
#include <vector>

#include <Eigen/Core>

#include "engine/axis/sighting.h"

namespace vantrel::engine {

/// Where each unknown and each observation stands.
class Layout {
  public:
    Layout(const std::vector<Sighting>& sightings, double airUncertainty);

    Eigen::Index unknowns() const { return unknowns_; }
    Eigen::Index observations() const { return observations_; }
    bool hasRoll() const { return hasRoll_; }

    Eigen::Index axis() const { return 0; }
    Eigen::Index pointing() const { return 2; }
    Eigen::Index pointingSize() const { return hasRoll_ ? 3 : 2; }
    Eigen::Index turn(std::size_t plate) const {
        return 1 + pointingSize() + static_cast<Eigen::Index>(plate);
    }
    std::optional<Eigen::Index> zero() const { return zero_; }
    std::optional<Eigen::Index> air() const { return air_; }

    Eigen::Index row(std::size_t plate) const { return rows_[plate]; }
    std::optional<Eigen::Index> readingRow(std::size_t plate) const { return readingRows_[plate]; }
    Eigen::Index airRow() const { return observations_ - 1; }

  private:
    bool hasRoll_ = false;
    std::optional<Eigen::Index> zero_, air_;
    std::vector<Eigen::Index> rows_;
    std::vector<std::optional<Eigen::Index>> readingRows_;
    Eigen::Index unknowns_ = 0, observations_ = 0;
};

struct Carriage {
    Eigen::Vector3d axis;       // northern end
    Eigen::Matrix3d first;      // columns: the camera's line, square to it, outwards
    std::vector<double> turns;  // radians, the first one 0
    double zero = 0;            // radians
    double airExcess = 0;       // share of the refraction

    Eigen::Matrix3d attitude(std::size_t plate) const;
    /// Two directions square to the axis and to each other, right-handed with it.
    Eigen::Matrix<double, 3, 2> tangents() const;
};

/// Residuals (measured less modelled) and the model's derivatives, all divided by their sigmas.
struct Linearised {
    Eigen::VectorXd residuals;
    Eigen::MatrixXd jacobian;

    double chiSquare() const { return residuals.squaredNorm(); }
};

class RotationFit {
  public:
    /// The best of several starts: the plane through the plates, the rotation between their attitudes, and
    /// the pole. At least one sighting.
    static RotationFit of(const std::vector<Sighting>& sightings, const Site& site);

    /// The model as it stands, unfitted: for what a plan would give.
    static RotationFit at(const Carriage& carriage, const std::vector<Sighting>& sightings, const Site& site);

    bool converged() const { return converged_; }
    /// Whether the observations tell all unknowns.
    bool determined() const { return determined_; }

    const Carriage& carriage() const { return carriage_; }
    const Layout& layout() const { return layout_; }
    const Linearised& linearised() const { return linearised_; }
    int degreesOfFreedom() const { return static_cast<int>(layout_.observations() - layout_.unknowns()); }

    /// What errors of the observations do to the unknowns; its square is their covariance.
    const Eigen::MatrixXd& inverse() const { return inverse_; }
    /// Of the axis's northern end, in space, with what a sag of the tube does to it; radians squared.
    Eigen::Matrix3d axisCovariance() const;

    /// Where a change of the observations (divided by their sigmas) moves the axis's northern end, in space.
    Eigen::Matrix3Xd axisMoves(const Eigen::MatrixXd& change) const;

    /// What the fit leaves of a change of the observations.
    Eigen::MatrixXd unexplained(const Eigen::MatrixXd& change) const;

  private:
    RotationFit(const std::vector<Sighting>& sightings, const Site& site);
    void improve(const Carriage& start);
    void finish(const Carriage& carriage);
    Linearised linearise(const Carriage& carriage) const;
    Carriage moved(const Carriage& carriage, const Eigen::VectorXd& step) const;

    std::vector<Sighting> sightings_;
    double airUncertainty_;
    Layout layout_;
    Carriage carriage_;
    Linearised linearised_;
    Eigen::MatrixXd inverse_;
    bool converged_ = false;
    bool determined_ = false;
};

/// The camera carried round this axis as well as the first plate and the directions of the others say.
Carriage carriageAbout(const Eigen::Vector3d& axis, const std::vector<Sighting>& sightings);

}  // namespace vantrel::engine
