#include "engine/axis/least_squares.h"

#include <cmath>

#include <Eigen/Geometry>

#include "engine/angles.h"
#include "engine/axis/axis_report.h"
#include "engine/axis/rotation_fit.h"

namespace vantrel::engine {
namespace {

using Eigen::Vector3d;

/// How the mount's own coordinates are off, by the same definition as CalcPolarError's: see polar_error.h.
void addOffsets(PolarError& written, const Carriage& carriage, std::span<const Plate> plates) {
    // The directions of the mount's hour angles 0 and 18 h.
    const Vector3d meridian = Eigen::AngleAxisd(carriage.zero, carriage.axis) * carriage.first.col(2);
    const Vector3d first = meridian - carriage.axis.dot(meridian) * carriage.axis;
    const Vector3d second = carriage.axis.cross(first);
    written.OffsetRA = signedHours(radiansToHours(std::atan2(-second.x(), first.x())));

    const double declination = 90 - radiansToDegrees(std::atan2(first.norm(), carriage.axis.dot(meridian)));
    double sum = 0;
    int readings = 0;
    for (const Plate& plate : plates) {
        if (!plate.reading) continue;
        sum += plate.reading->declination;
        ++readings;
    }
    written.OffsetDec = sum / readings - declination;
}

PlateResidual residualOf(const Sighting& sighting, const Carriage& carriage, std::size_t plate) {
    const Eigen::Matrix3d frame = sighting.frame(carriage.airExcess);
    const Eigen::Matrix3d attitude = carriage.attitude(plate);
    const Vector3d outwards = frame.col(2);
    const Vector3d off = outwards - attitude.col(2);
    Vector3d north = carriage.axis - carriage.axis.dot(outwards) * outwards;
    north = north.norm() > 1e-9 ? Vector3d(north.normalized()) : Vector3d(frame.col(1));

    PlateResidual residual{.along = off.dot(outwards.cross(north)) / kArcsecond,
                           .across = off.dot(north) / kArcsecond};
    if (sighting.positionAngle()) {
        const double modelled =
            std::atan2(attitude.col(0).dot(frame.col(0)), attitude.col(0).dot(frame.col(1)));
        residual.roll = signedRadians(*sighting.positionAngle() - modelled) / kArcsecond;
    }
    if (sighting.reading())
        residual.reading =
            signedRadians(*sighting.reading() - carriage.zero + carriage.turns[plate]) / kArcsecond;
    return residual;
}

}  // namespace

AxisEstimate LeastSquares::estimate(std::span<const Plate> plates, const Site& site) const {
    AxisEstimate estimate{.method = EstimateMethod::kLeastSquares, .validity = Validity::kWrongNumber};
    if (plates.size() < 2) return estimate;
    const auto sightings = sightingsOf(plates, site, settings_);
    if (!sightings || !std::isfinite(site.latitude)) {
        estimate.validity = Validity::kUnusableInput;
        return estimate;
    }
    const RotationFit fit = RotationFit::of(*sightings, site);
    estimate.validity = validityOf(fit);
    if (!estimate.valid()) return estimate;

    const Carriage& carriage = fit.carriage();
    const DirectionCosines axis{carriage.axis.x(), carriage.axis.y(), carriage.axis.z()};
    estimate.written = writtenError(axis);
    describePosition(estimate, axis, site);
    if (fit.layout().zero()) addOffsets(estimate.written, carriage, plates);
    estimate.covariance =
        covarianceOnSky(fit.axisCovariance() / (kArcsecond * kArcsecond), carriage.axis, site.latitude);
    for (std::size_t i = 0; i < sightings->size(); ++i)
        estimate.residuals.push_back(residualOf((*sightings)[i], carriage, i));
    estimate.chiSquare = fit.linearised().chiSquare();
    estimate.degreesOfFreedom = fit.degreesOfFreedom();
    return estimate;
}

}  // namespace vantrel::engine
