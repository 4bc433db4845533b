#include "sky/focal_plane.h"

namespace vantrel::sky {
namespace {

Vector3 combined(double a, const Vector3& u, double b, const Vector3& v) {
    return {a * u[0] + b * v[0], a * u[1] + b * v[1], a * u[2] + b * v[2]};
}

}  // namespace

FocalPlane::FocalPlane(const Vector3& axis, const Vector3& up, const Vector3& east,
                       const CameraMounting& mounting)
    : axis_(axis),
      centreX_((mounting.width - 1) / 2),
      centreY_((mounting.height - 1) / 2),
      pixelsPerUnit_(1 / (mounting.scale * kDegree)) {
    const double c = std::cos(mounting.rotation * kDegree);
    const double s = std::sin(mounting.rotation * kDegree);
    const double handedness = mounting.mirrored ? -1 : 1;
    top_ = combined(c, up, s, east);
    right_ = combined(handedness * s, up, -handedness * c, east);
}

std::optional<PixelPosition> FocalPlane::pixel(const Vector3& direction) const {
    constexpr double kWidest = 0.0174524;  // cosine of 89 degrees
    const double along = dot(direction, axis_);
    if (along < kWidest) return std::nullopt;
    return PixelPosition{centreX_ + pixelsPerUnit_ * dot(direction, right_) / along,
                         centreY_ - pixelsPerUnit_ * dot(direction, top_) / along};
}

double FocalPlane::cornerDistance() const {
    return std::atan(std::hypot(centreX_ + 0.5, centreY_ + 0.5) / pixelsPerUnit_) / kDegree;
}

}  // namespace vantrel::sky
