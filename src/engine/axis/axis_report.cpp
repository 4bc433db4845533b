#include "engine/axis/axis_report.h"

#include <cmath>

#include <Eigen/Geometry>

#include "engine/angles.h"

namespace vantrel::engine {
namespace {

using Eigen::Vector3d;

/// Beyond this many degrees of sigma the fit's straight lines are no picture of the sky.
constexpr double kWidestSigma = 10;

/// East and up at the axis's end above the horizon. Where the axis is vertical they are those of the
/// meridian.
Eigen::Matrix<double, 3, 2> skyAt(const Vector3d& end, double latitude) {
    const Vector3d up = zenith(latitude) - end.dot(zenith(latitude)) * end;
    Eigen::Matrix<double, 3, 2> sky;
    sky.col(1) = up.norm() > 1e-9 ? up.normalized() : Vector3d(1, 0, 0);
    sky.col(0) = (latitude < 0 ? sky.col(1).cross(end) : end.cross(sky.col(1)));
    return sky;
}

}  // namespace

Validity validityOf(const RotationFit& fit) {
    if (fit.layout().observations() < fit.layout().unknowns()) return Validity::kWrongNumber;
    if (!fit.determined()) return Validity::kUndetermined;
    if (!fit.converged()) return Validity::kNoSolution;
    const double variance = fit.axisCovariance().trace() / 2;
    if (!(std::sqrt(variance) < degreesToRadians(kWidestSigma))) return Validity::kUndetermined;
    return Validity::kValid;
}

void describePosition(AxisEstimate& estimate, const DirectionCosines& northernEnd, const Site& site) {
    estimate.fromTruePole = offsetFromPole(northernEnd, site.latitude, truePoleAltitude(site));
    estimate.fromRefractedPole = offsetFromPole(northernEnd, site.latitude, refractedPoleAltitude(site));
}

AxisCovariance covarianceOnSky(const Eigen::Matrix3d& covariance, const Vector3d& northernEnd,
                               double latitude) {
    const auto sky = skyAt(latitude < 0 ? Vector3d(-northernEnd) : northernEnd, latitude);
    const Eigen::Matrix2d c = sky.transpose() * covariance * sky;
    return {c(0, 0), c(0, 1), c(1, 1)};
}

}  // namespace vantrel::engine
