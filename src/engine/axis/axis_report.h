// What a fit says, in the terms of an estimate. For this folder's own use.
#pragma once

#include <Eigen/Core>

#include "engine/axis/axis_estimate.h"
#include "engine/axis/rotation_fit.h"

namespace vantrel::engine {

Validity validityOf(const RotationFit& fit);

/// Fills in how this northern end lies against the poles.
void describePosition(AxisEstimate& estimate, const DirectionCosines& northernEnd, const Site& site);

/// Of a northern end that scatters in space like this (any unit of angle, squared).
AxisCovariance covarianceOnSky(const Eigen::Matrix3d& covariance, const Eigen::Vector3d& northernEnd,
                               double latitude);

}  // namespace vantrel::engine
