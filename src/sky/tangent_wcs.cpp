#include "sky/tangent_wcs.h"

#include <cmath>

#include "sky/vector3.h"

namespace vantrel::sky {

std::optional<PlanePosition> toTangentPlane(SkyPosition position, SkyPosition centre) {
    const double sinDec = std::sin(position.dec * kDegree);
    const double cosDec = std::cos(position.dec * kDegree);
    const double sin0 = std::sin(centre.dec * kDegree);
    const double cos0 = std::cos(centre.dec * kDegree);
    const double dRa = (position.ra - centre.ra) * kDegree;
    const double depth = sinDec * sin0 + cosDec * cos0 * std::cos(dRa);
    if (!(depth > 1e-9)) return std::nullopt;
    return PlanePosition{cosDec * std::sin(dRa) / depth / kDegree,
                         (sinDec * cos0 - cosDec * sin0 * std::cos(dRa)) / depth / kDegree};
}

SkyPosition fromTangentPlane(PlanePosition position, SkyPosition centre) {
    const double xi = position.xi * kDegree;
    const double eta = position.eta * kDegree;
    const double sin0 = std::sin(centre.dec * kDegree);
    const double cos0 = std::cos(centre.dec * kDegree);
    const double across = cos0 - eta * sin0;
    const double ra = centre.ra + std::atan2(xi, across) / kDegree;
    const double dec = std::atan2(sin0 + eta * cos0, std::hypot(xi, across)) / kDegree;
    const double turned = std::fmod(ra, 360.0);
    return {turned < 0 ? turned + 360.0 : turned, dec};
}

double separationDeg(SkyPosition a, SkyPosition b) {
    const double sinDec = std::sin((a.dec - b.dec) * kDegree / 2);
    const double sinRa = std::sin((a.ra - b.ra) * kDegree / 2);
    const double h = sinDec * sinDec + std::cos(a.dec * kDegree) * std::cos(b.dec * kDegree) * sinRa * sinRa;
    return 2 * std::atan2(std::sqrt(h), std::sqrt(std::fmax(0.0, 1 - h))) / kDegree;
}

SkyPosition TangentWcs::toSky(PixelPosition pixel) const {
    const double dx = pixel.x - referencePixel.x;
    const double dy = pixel.y - referencePixel.y;
    return fromTangentPlane({cd[0] * dx + cd[1] * dy, cd[2] * dx + cd[3] * dy}, reference);
}

std::optional<PixelPosition> TangentWcs::toPixel(SkyPosition position) const {
    const auto plane = toTangentPlane(position, reference);
    const double det = cd[0] * cd[3] - cd[1] * cd[2];
    if (!plane || det == 0) return std::nullopt;
    return PixelPosition{referencePixel.x + (cd[3] * plane->xi - cd[1] * plane->eta) / det,
                         referencePixel.y + (cd[0] * plane->eta - cd[2] * plane->xi) / det};
}

}  // namespace vantrel::sky
