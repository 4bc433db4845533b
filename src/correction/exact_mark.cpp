#include "correction/exact_mark.h"

#include <cmath>

#include <Eigen/Geometry>
#include <Eigen/LU>

#include "engine/angles.h"

namespace vantrel::correction {

using Eigen::Matrix3d;
using Eigen::Vector2d;
using Eigen::Vector3d;
using engine::degreesToRadians;
using engine::PixelPosition;
using engine::radiansToDegrees;

namespace {

Vector3d directionOf(double hourAngle, double declination) {
    const auto [l, m, N] = engine::GetDirectionCosines(hourAngle, declination);
    return {l, m, N};
}

Vector3d zenithOf(double latitude) { return directionOf(0, latitude); }

Matrix3d rotation(const Vector3d& vector) {
    const double angle = vector.norm();
    if (angle == 0) return Matrix3d::Identity();
    return Eigen::AngleAxisd(angle, vector / angle).toRotationMatrix();
}

/// The axis's end above the horizon.
Vector3d visibleEnd(const engine::PolarError& error, double latitude) {
    const auto [l, m, N] = engine::northernEnd(error);
    return (latitude < 0 ? -1 : 1) * Vector3d(l, m, N);
}

double altitudeOf(const Vector3d& direction, const Vector3d& zenith) {
    return std::atan2(direction.dot(zenith), direction.cross(zenith).norm());
}

/// Higher by this many radians.
Vector3d raised(const Vector3d& direction, const Vector3d& zenith, double angle) {
    const Vector3d level = direction.cross(zenith);
    const double sine = level.norm();
    if (sine < 1e-12) return direction;
    return Eigen::AngleAxisd(angle, level / sine) * direction;
}

}  // namespace

std::optional<PicturedSky> PicturedSky::of(const engine::PlateSolution& plate, const PixelPosition& centre,
                                           double lst) {
    PicturedSky sky;
    sky.scale_ << plate.CD1_1, plate.CD1_2, plate.CD2_1, plate.CD2_2;
    sky.scale_ *= degreesToRadians(1);
    const double determinant = sky.scale_.determinant();
    if (!std::isfinite(determinant) || determinant == 0) return std::nullopt;
    sky.lst_ = lst;
    sky.centre_ = centre;
    sky.frame_.col(2) = sky.direction(engine::EquatorialPosition{.RA = plate.ra, .Dec = plate.dec});
    sky.frame_.col(0) = directionOf(lst - plate.ra - 6, 0);
    sky.frame_.col(1) = sky.frame_.col(2).cross(sky.frame_.col(0));
    if (!sky.frame_.allFinite()) return std::nullopt;
    return sky;
}

Vector3d PicturedSky::direction(const PixelPosition& pixel) const {
    const Vector2d plane = scale_ * Vector2d(pixel.x - centre_.x, pixel.y - centre_.y);
    return (frame_ * Vector3d(plane.x(), plane.y(), 1)).normalized();
}

std::optional<PixelPosition> PicturedSky::pixel(const Vector3d& direction) const {
    const Vector3d seen = frame_.transpose() * direction;
    if (!(seen.z() > 1e-6)) return std::nullopt;
    const Vector2d offset = scale_.inverse() * (seen.head<2>() / seen.z());
    return PixelPosition{centre_.x + offset.x(), centre_.y + offset.y()};
}

engine::EquatorialPosition PicturedSky::place(const Vector3d& direction) const {
    const double hourAngle = engine::radiansToHours(std::atan2(-direction.y(), direction.x()));
    return {.RA = engine::NormalizeRAHours(lst_ - hourAngle),
            .Dec = radiansToDegrees(std::atan2(direction.z(), direction.head<2>().norm()))};
}

Vector3d PicturedSky::direction(const engine::EquatorialPosition& place) const {
    return directionOf(lst_ - place.RA, place.Dec);
}

AdjusterTurn azimuthTurn(const engine::PolarError& error, double latitude) {
    const Vector3d zenith = zenithOf(latitude);
    const Vector3d end = visibleEnd(error, latitude);
    const Vector3d pole(0, 0, latitude < 0 ? -1 : 1);
    const double level = end.dot(pole) - end.dot(zenith) * pole.dot(zenith);
    return std::atan2(zenith.dot(end.cross(pole)), level) * zenith;
}

AdjusterTurn elevationTurn(const engine::PolarError& error, double latitude, bool azimuthIsRight) {
    const Vector3d zenith = zenithOf(latitude);
    const Vector3d end = visibleEnd(error, latitude);
    const Vector3d facing = azimuthIsRight ? Vector3d(0, 0, latitude < 0 ? -1 : 1) : end;
    const Vector3d hinge = facing.cross(zenith);
    if (hinge.norm() < 1e-9) return Vector3d::Zero();
    const double raise = degreesToRadians(std::abs(latitude)) - altitudeOf(end, zenith);
    return raise * hinge.normalized();
}

std::optional<PixelPosition> exactMark(const PicturedSky& picture, const Vector3d& star,
                                       const AdjusterTurn& turn, const engine::Site& site) {
    const Vector3d zenith = zenithOf(site.latitude);
    const engine::AirLift air(site.air);
    const auto lift = [&](double altitude) {
        return degreesToRadians(air.atTrueAltitude(radiansToDegrees(altitude)));
    };
    const Vector3d seen = raised(star, zenith, lift(altitudeOf(star, zenith)));
    // The camera will be turned; to it, the star goes the other way.
    const Vector3d goal = rotation(-turn) * seen;
    const double altitude = altitudeOf(goal, zenith);
    double lifted = 0;
    for (int round = 0; round < 10; ++round) lifted = lift(altitude - lifted);
    return picture.pixel(raised(goal, zenith, -lifted));
}

}  // namespace vantrel::correction
