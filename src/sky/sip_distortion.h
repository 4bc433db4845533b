// How an image departs from its linear world coordinates: the SIP polynomials of FITS headers.
// (Shupe et al. 2005, ASP Conf. Ser. 347, 491)
#pragma once

#include <vector>

#include "sky/tangent_wcs.h"

namespace vantrel::sky {

/// A polynomial of a pixel's offset (u, v) from the reference pixel, itself in pixels.
class SipPolynomial {
  public:
    SipPolynomial() = default;
    /// Zero, of this order.
    explicit SipPolynomial(int order) : order_(order), coefficients_(indexOf(0, order) + 1) {}

    int order() const { return order_; }
    /// The coefficient of u^p v^q; p + q is at most the order.
    double& at(int p, int q) { return coefficients_[indexOf(p, q)]; }
    double at(int p, int q) const { return coefficients_[indexOf(p, q)]; }
    double value(double u, double v) const;

  private:
    static std::size_t indexOf(int p, int q) {
        const auto sum = static_cast<std::size_t>(p) + static_cast<std::size_t>(q);
        return sum * (sum + 1) / 2 + static_cast<std::size_t>(q);
    }

    int order_ = 0;
    std::vector<double> coefficients_ = {0};  // by p + q, then by q
};

struct SipDistortion {
    SipPolynomial a, b;    ///< what is added to a pixel's offset before the matrix
    SipPolynomial ap, bp;  ///< what is added behind the inverse matrix to find the pixel

    /// Of array pixels, as everywhere.
    SkyPosition toSky(const TangentWcs& wcs, PixelPosition pixel) const;
    std::optional<PixelPosition> toPixel(const TangentWcs& wcs, SkyPosition position) const;

    /// The same for rows that are counted the other way.
    SipDistortion upsideDown() const;
};

}  // namespace vantrel::sky
