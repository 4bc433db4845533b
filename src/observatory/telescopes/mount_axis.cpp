#include "observatory/telescopes/mount_axis.h"

namespace vantrel::observatory {
namespace {

using sky::kDegree;
using sky::Vector3;
using sky::operator*;

constexpr double kArcminute = kDegree / 60;

}  // namespace

sky::Matrix3 rotation(const Vector3& axis, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const auto& [x, y, z] = axis;
    return {{{c + x * x * (1 - c), x * y * (1 - c) - z * s, x * z * (1 - c) + y * s},
             {y * x * (1 - c) + z * s, c + y * y * (1 - c), y * z * (1 - c) - x * s},
             {z * x * (1 - c) - y * s, z * y * (1 - c) + x * s, c + z * z * (1 - c)}}};
}

TubeAttitude turned(const TubeAttitude& pointing, const Vector3& axis, double angle) {
    const sky::Matrix3 turn = rotation(axis, angle);
    return {turn * pointing.ahead, turn * pointing.up, turn * pointing.east};
}

sky::Matrix3 mountToSky(const AxisError& error, double latitude) {
    // A right-handed turn about the east lifts what points north; one about the zenith carries north to west.
    const double hemisphere = latitude < 0 ? -1 : 1;
    const Vector3 east{0, 1, 0};
    return rotation(zenith(latitude), -hemisphere * error.azimuth * kArcminute) *
           rotation(east, hemisphere * error.elevation * kArcminute);
}

Vector3 hourAngleDirection(double hourAngle, double declination) {
    return sky::direction(-hourAngle * kDegree, declination * kDegree);
}

HaDec haDecOf(const Vector3& direction) {
    return {std::atan2(-direction[1], direction[0]) / kDegree,
            std::atan2(direction[2], std::hypot(direction[0], direction[1])) / kDegree};
}

AltAz altAzOf(const Vector3& direction, double latitude) {
    const double up = sky::dot(direction, zenith(latitude));
    const double north = sky::dot(direction, northPoint(latitude));
    const double east = direction[1];
    const double azimuth = std::atan2(east, north) / kDegree;
    return {std::atan2(up, std::hypot(north, east)) / kDegree, azimuth < 0 ? azimuth + 360 : azimuth};
}

Vector3 zenith(double latitude) { return {std::cos(latitude * kDegree), 0, std::sin(latitude * kDegree)}; }

Vector3 northPoint(double latitude) {
    return {-std::sin(latitude * kDegree), 0, std::cos(latitude * kDegree)};
}

}  // namespace vantrel::observatory
