// The tangent-plane (gnomonic, "TAN") projection and the world coordinates of an image.
//
// Pixels here are those of the image array: column x and row y from 0, centres at whole numbers, row 0 first
// in the array. Sky positions are degrees in whatever frame the reference position is in.
#pragma once

#include <optional>

#include "platform/pixel_position.h"
#include "sky/sky_position.h"

namespace vantrel::sky {

using platform::PixelPosition;

/// Standard coordinates in degrees: xi towards east, eta towards north.
struct PlanePosition {
    double xi = 0;
    double eta = 0;
};

/// Projects about the centre; empty for positions 90 degrees or more away.
/// (Calabretta & Greisen 2002, A&A 395, 1077, section 5.1.3)
std::optional<PlanePosition> toTangentPlane(SkyPosition position, SkyPosition centre);
SkyPosition fromTangentPlane(PlanePosition position, SkyPosition centre);

/// Angle between two positions in degrees, good at any size.
double separationDeg(SkyPosition a, SkyPosition b);

struct TangentWcs {
    SkyPosition reference;         ///< where the reference pixel points
    PixelPosition referencePixel;  ///< in array pixels
    double cd[4] = {0, 0, 0,
                    0};  ///< CD1_1, CD1_2, CD2_1, CD2_2 in degrees per pixel: (xi, eta) from (dx, dy)

    SkyPosition toSky(PixelPosition pixel) const;
    std::optional<PixelPosition> toPixel(SkyPosition position) const;
};

}  // namespace vantrel::sky
