// How a camera's pixels lie on the sky.
#pragma once

#include <optional>

#include "sky/tangent_wcs.h"
#include "sky/vector3.h"

namespace vantrel::sky {

/// How a camera is mounted. Without rotation and mirror its picture, looked at with row 0 on top, shows up on
/// top and east on the left.
struct CameraMounting {
    double scale = 1;  // degrees per pixel on the optical axis
    double width = 0;  // pixels
    double height = 0;
    double rotation = 0;    // degrees from up through east to where the picture's top points
    bool mirrored = false;  // columns reversed, after the rotation
};

/// Gnomonic projection about the optical axis, which meets the middle of the picture: column (width - 1) / 2,
/// row (height - 1) / 2, counted from 0.
class FocalPlane {
  public:
    /// Unit vectors at right angles: where the axis, the mount's up and its east point.
    FocalPlane(const Vector3& axis, const Vector3& up, const Vector3& east, const CameraMounting& mounting);

    /// The pixel that sees the direction, also outside the picture; empty when it is more than 89 degrees
    /// off.
    std::optional<PixelPosition> pixel(const Vector3& direction) const;

    /// Angle between the optical axis and the picture's corners, degrees.
    double cornerDistance() const;

  private:
    Vector3 axis_;
    Vector3 right_;  // of the picture
    Vector3 top_;
    double centreX_;
    double centreY_;
    double pixelsPerUnit_;  // per tangent of the angle from the axis
};

}  // namespace vantrel::sky
