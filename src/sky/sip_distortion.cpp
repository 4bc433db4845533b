#include "sky/sip_distortion.h"

namespace vantrel::sky {

namespace {

SipPolynomial rowsReversed(const SipPolynomial& polynomial, double sign) {
    SipPolynomial reversed(polynomial.order());
    for (int degree = 0; degree <= polynomial.order(); ++degree)
        for (int q = 0; q <= degree; ++q)
            reversed.at(degree - q, q) = (q % 2 == 0 ? sign : -sign) * polynomial.at(degree - q, q);
    return reversed;
}

}  // namespace

double SipPolynomial::value(double u, double v) const {
    double sum = 0;
    double uPower = 1;
    for (int p = 0; p <= order_; ++p, uPower *= u) {
        double term = uPower;
        for (int q = 0; p + q <= order_; ++q, term *= v) sum += at(p, q) * term;
    }
    return sum;
}

SkyPosition SipDistortion::toSky(const TangentWcs& wcs, PixelPosition pixel) const {
    const double u = pixel.x - wcs.referencePixel.x;
    const double v = pixel.y - wcs.referencePixel.y;
    return wcs.toSky({pixel.x + a.value(u, v), pixel.y + b.value(u, v)});
}

std::optional<PixelPosition> SipDistortion::toPixel(const TangentWcs& wcs, SkyPosition position) const {
    const auto linear = wcs.toPixel(position);
    if (!linear) return std::nullopt;
    const double u = linear->x - wcs.referencePixel.x;
    const double v = linear->y - wcs.referencePixel.y;
    return PixelPosition{linear->x + ap.value(u, v), linear->y + bp.value(u, v)};
}

SipDistortion SipDistortion::upsideDown() const {
    return {rowsReversed(a, 1), rowsReversed(b, -1), rowsReversed(ap, 1), rowsReversed(bp, -1)};
}

}  // namespace vantrel::sky
