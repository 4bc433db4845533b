// The plate model: where on the sky each pixel of an image points.
//
// Pixel offsets (dx, dy) count from the image's centre, ((width-1)/2, (height-1)/2), column first, row 0
// first in the array. A polynomial of order 1 to 3 turns them into standard coordinates (xi, eta) about the
// tangent point.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "sky/sip_distortion.h"
#include "sky/tangent_wcs.h"
#include "sky/vector3.h"

namespace vantrel::solver {

struct StarPair {
    sky::PixelPosition pixel;
    sky::Vector3 sky{};  ///< unit vector in the ICRS
    double weight = 1;   ///< for errors to follow from a fit: one over the variance along each axis, pixels
};

/// Standard deviations of what a fit tells.
struct PlateErrors {
    double centreArcsec = 0;  ///< along each axis
    double rollDeg = 0;
};

/// The tangent plane about a point of the sky, for many projections.
class TangentFrame {
  public:
    explicit TangentFrame(sky::SkyPosition centre);

    sky::SkyPosition centre() const { return centre_; }
    /// Standard coordinates in degrees; empty for directions 90 degrees or more away.
    std::optional<sky::PlanePosition> project(const sky::Vector3& direction) const;

  private:
    sky::SkyPosition centre_;
    sky::Vector3 east_;
    sky::Vector3 north_;
    sky::Vector3 outwards_;
};

class PlateModel {
  public:
    /// Coefficients that an order needs, for each of the two coordinates.
    static std::size_t coefficientCount(int order) {
        return static_cast<std::size_t>((order + 1) * (order + 2) / 2);
    }

    /// Least squares of the pairs about the tangent point; empty when they don't determine the model.
    static std::optional<PlateModel> fit(std::span<const StarPair> pairs, sky::PixelPosition imageCentre,
                                         sky::SkyPosition tangentPoint, double unitPixels, int order);

    /// The linear model of a known orientation: standard coordinates are cd * (dx, dy), in degrees per pixel.
    static PlateModel linear(sky::PixelPosition imageCentre, sky::SkyPosition tangentPoint, double unitPixels,
                             const std::array<double, 4>& cd);

    int order() const { return order_; }
    sky::SkyPosition tangentPoint() const { return frame_.centre(); }
    sky::SkyPosition toSky(sky::PixelPosition pixel) const;

    /// The pixel that shows the direction, by Newton's method; empty when far outside of what the model
    /// covers.
    std::optional<sky::PixelPosition> toPixel(const sky::Vector3& direction) const;

    /// What the errors of the pairs it was fitted to make of the centre and the roll.
    PlateErrors errors(std::span<const StarPair> pairs) const;

    /// Derivatives of (xi, eta) by (column, row) at the image's centre, degrees per pixel: CD1_1 ... CD2_2.
    std::array<double, 4> matrix() const;

    /// What has to be added to (dx, dy), in pixels, for the matrix alone to lead to where the model does.
    std::pair<sky::SipPolynomial, sky::SipPolynomial> distortion() const;

  private:
    PlateModel(sky::PixelPosition imageCentre, sky::SkyPosition tangentPoint, double unitPixels, int order)
        : imageCentre_(imageCentre), frame_(tangentPoint), unitPixels_(unitPixels), order_(order) {}
    sky::PlanePosition plane(double u, double v) const;

    sky::PixelPosition imageCentre_;
    TangentFrame frame_;
    double unitPixels_ = 1;
    int order_ = 1;
    std::array<double, 10> xi_{};   // of 1, u, v, u^2, uv, v^2, u^3, u^2 v, u v^2, v^3
    std::array<double, 10> eta_{};  // u and v being offsets in units of unitPixels
};

}  // namespace vantrel::solver
