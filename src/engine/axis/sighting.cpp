#include "engine/axis/sighting.h"

#include <cmath>

#include <Eigen/Cholesky>
#include <Eigen/Geometry>

#include "engine/angles.h"

namespace vantrel::engine {
namespace {

/// East, north and outwards. At the pole itself, east is that of the hour angle.
Eigen::Matrix3d frameAt(double hourAngle, double declination) {
    Eigen::Matrix3d frame;
    frame.col(2) = directionOf(hourAngle, declination);
    frame.col(0) = directionOf(hourAngle - 6, 0);
    frame.col(1) = frame.col(2).cross(frame.col(0));
    return frame;
}

Eigen::Vector3d liftAt(const Eigen::Vector3d& place, const Site& site) {
    const Eigen::Vector3d horizontal = place.cross(zenith(site.latitude));
    const double sine = horizontal.norm();
    if (sine < 1e-12) return Eigen::Vector3d::Zero();
    const double altitude = radiansToDegrees(std::atan2(place.dot(zenith(site.latitude)), sine));
    return horizontal * (degreesToRadians(AirLift(site.air).atTrueAltitude(altitude)) / sine);
}

Eigen::Matrix3d matrixOf(const PlateCovariance& c, const FitSettings& settings) {
    Eigen::Matrix3d matrix;
    matrix << c.eastEast, c.eastNorth, c.eastRoll,  //
        c.eastNorth, c.northNorth, c.northRoll,     //
        c.eastRoll, c.northRoll, c.rollRoll;
    const double centre = settings.centreFloor * settings.centreFloor;
    matrix.diagonal() += Eigen::Vector3d(centre, centre, settings.rollFloor * settings.rollFloor);
    return matrix * (kArcsecond * kArcsecond);
}

}  // namespace

Eigen::Vector3d zenith(double latitude) { return directionOf(0, latitude); }

Eigen::Vector3d directionOf(double hourAngle, double declination) {
    const auto [l, m, N] = GetDirectionCosines(hourAngle, declination);
    return {l, m, N};
}

std::optional<Sighting> Sighting::of(const Plate& plate, const Site& site, const FitSettings& settings) {
    if (!isFinite(plate)) return std::nullopt;
    Sighting sighting;
    sighting.trueFrame_ = frameAt(plate.hourAngle, plate.declination);
    sighting.lift_ = liftAt(sighting.trueFrame_.col(2), site);
    sighting.sag_ = settings.sagSigma * kArcsecond * zenith(site.latitude).cross(sighting.trueFrame_.col(2));
    if (plate.positionAngle && std::isfinite(settings.rollFloor))
        sighting.positionAngle_ = degreesToRadians(*plate.positionAngle);
    if (plate.reading && std::isfinite(settings.readingSigma))
        sighting.reading_ = hoursToRadians(plate.reading->hourAngle);
    sighting.readingSigma_ = settings.readingSigma * kArcsecond;

    const Eigen::Index size = sighting.size();
    const Eigen::LLT<Eigen::MatrixXd> root(matrixOf(plate.covariance, settings).topLeftCorner(size, size));
    if (root.info() != Eigen::Success || !(sighting.readingSigma_ > 0)) return std::nullopt;
    sighting.root_ = root.matrixL();
    return sighting;
}

Eigen::Matrix3d Sighting::frame(double airExcess) const {
    const double angle = lift_.norm();
    if (angle == 0) return trueFrame_;
    return Eigen::AngleAxisd(angle * (1 + airExcess), lift_ / angle) * trueFrame_;
}

Eigen::Matrix3d Sighting::attitude() const {
    const Eigen::Matrix3d seen = frame(0);
    const double angle = positionAngle_.value_or(0);
    Eigen::Matrix3d attitude;
    attitude.col(0) = std::sin(angle) * seen.col(0) + std::cos(angle) * seen.col(1);
    attitude.col(2) = seen.col(2);
    attitude.col(1) = attitude.col(2).cross(attitude.col(0));
    return attitude;
}

Eigen::VectorXd Sighting::weighted(const Eigen::Vector3d& values) const {
    return root_.triangularView<Eigen::Lower>().solve(values.head(size()));
}

Eigen::Matrix3d rotation(const Eigen::Vector3d& vector) {
    const double angle = vector.norm();
    if (angle == 0) return Eigen::Matrix3d::Identity();
    return Eigen::AngleAxisd(angle, vector / angle).toRotationMatrix();
}

Eigen::Vector3d seenOf(const Eigen::Vector3d& rotation, const Eigen::Matrix3d& frame) {
    // About north the camera turns east, about east south; about its own axis, right-handed towards the sky,
    // from north to west.
    return {rotation.dot(frame.col(1)), -rotation.dot(frame.col(0)), -rotation.dot(frame.col(2))};
}

std::optional<std::vector<Sighting>> sightingsOf(std::span<const Plate> plates, const Site& site,
                                                 const FitSettings& settings) {
    std::vector<Sighting> sightings;
    for (const Plate& plate : plates) {
        auto sighting = Sighting::of(plate, site, settings);
        if (!sighting) return std::nullopt;
        sightings.push_back(*std::move(sighting));
    }
    return sightings;
}

}  // namespace vantrel::engine
