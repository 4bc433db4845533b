#include "solver/attitude.h"

#include <algorithm>
#include <cmath>

namespace vantrel::solver {

namespace {

using sky::cross;
using sky::kDegree;
using sky::Matrix3;
using sky::SkyPosition;
using sky::Vector3;
using sky::operator*;

constexpr double kSkewAtMost = 0.04;  // departure from a similarity that no camera shows

/// Which way round three directions stand: 1 or -1.
double handOf(const std::array<Vector3, 3>& v) { return sky::dot(v[0], cross(v[1], v[2])) < 0 ? -1 : 1; }

/// Three orthogonal axes laid through two directions.
Matrix3 axesThrough(const Vector3& a, const Vector3& b) {
    const Vector3 middle = sky::normalized({a[0] + b[0], a[1] + b[1], a[2] + b[2]});
    const Vector3 normal = sky::normalized(cross(a, b));
    return {middle, cross(normal, middle), normal};
}

}  // namespace

Matrix3 axesAt(SkyPosition place) {
    const Vector3 outwards = sky::direction(place.ra * kDegree, place.dec * kDegree);
    const Vector3 east = {-std::sin(place.ra * kDegree), std::cos(place.ra * kDegree), 0};
    return {east, cross(outwards, east), outwards};
}

Attitude Attitude::of(std::array<Vector3, 3> camera, const std::array<Vector3, 3>& sky, double stretch) {
    Attitude attitude;
    attitude.stretch = stretch;
    attitude.hand = handOf(camera) * handOf(sky);
    for (Vector3& v : camera) v[1] *= attitude.hand;
    attitude.toSky = sky::transposed(axesThrough(sky[0], sky[1])) * axesThrough(camera[0], camera[1]);
    return attitude;
}

SkyPosition Attitude::centre() const {
    const Vector3 ahead = skyOf({0, 0, 1});
    const double ra = std::atan2(ahead[1], ahead[0]) / kDegree;
    return {ra < 0 ? ra + 360 : ra, std::asin(std::clamp(ahead[2], -1.0, 1.0)) / kDegree};
}

PlateModel Attitude::model(const PlateGeometry& geometry) const {
    const SkyPosition tangent = centre();
    const Matrix3 axes = axesAt(tangent);
    const Vector3 column = axes * skyOf({1, 0, 0});
    const Vector3 row = axes * skyOf({0, 1, 0});
    const double x = geometry.scaleX / 3600 * stretch;
    const double y = geometry.scaleY / 3600 * stretch;
    return PlateModel::linear(geometry.centre(), tangent, (geometry.width + geometry.height) / 4,
                              {column[0] * x, row[0] * y, column[1] * x, row[1] * y});
}

bool isPlausible(const PlateModel& model, const PlateGeometry& geometry, double scaleReach) {
    const auto cd = model.matrix();
    const double hand = cd[0] * cd[3] - cd[1] * cd[2] < 0 ? -1 : 1;
    const double ratio = geometry.scaleX / geometry.scaleY;
    const double size = std::hypot(cd[0], cd[2]);
    const double skew = std::hypot(cd[0] - hand * cd[3] * ratio, cd[1] * ratio + hand * cd[2]) / size;
    const double stretch = size * 3600 / geometry.scaleX;
    return skew < kSkewAtMost && std::abs(std::log(stretch)) < scaleReach + kSkewAtMost;
}

}  // namespace vantrel::solver
