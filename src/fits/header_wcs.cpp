#include "fits/header_wcs.h"

#include <cmath>

#include "sky/vector3.h"

namespace vantrel::fits {

using sky::TangentWcs;

namespace {

/// The order, and the coefficients from that sum of powers on.
void addPolynomial(std::vector<FitsCard>& cards, const std::string& name,
                   const sky::SipPolynomial& polynomial, int leastDegree, const char* what) {
    cards.push_back({name + "_ORDER", std::int64_t{polynomial.order()}, what});
    for (int degree = leastDegree; degree <= polynomial.order(); ++degree)
        for (int q = 0; q <= degree; ++q)
            cards.push_back({name + "_" + std::to_string(degree - q) + "_" + std::to_string(q),
                             polynomial.at(degree - q, q)});
}

}  // namespace

std::optional<TangentWcs> wcsFromHeader(const FitsHeader& header, double height, bool bottomUp) {
    const auto type1 = header.text("CTYPE1");
    const auto type2 = header.text("CTYPE2");
    if (!type1 || !type2 || !type1->starts_with("RA---TAN") || !type2->starts_with("DEC--TAN"))
        return std::nullopt;
    const auto ra = header.number("CRVAL1");
    const auto dec = header.number("CRVAL2");
    const auto x = header.number("CRPIX1");
    const auto y = header.number("CRPIX2");
    if (!ra || !dec || !x || !y || std::abs(*dec) > 90) return std::nullopt;

    TangentWcs wcs{{*ra, *dec}, {*x - 1, bottomUp ? height - *y : *y - 1}};
    const auto step1 = header.number("CDELT1");
    const auto step2 = header.number("CDELT2");
    if (header.number("CD1_1") || header.number("CD1_2")) {
        const char* keywords[] = {"CD1_1", "CD1_2", "CD2_1", "CD2_2"};
        for (int i = 0; i < 4; ++i) wcs.cd[i] = header.number(keywords[i]).value_or(0);
    } else if (step1 && step2) {
        const double turn = header.number("CROTA2").value_or(0) * sky::kDegree;
        const bool matrix = header.number("PC1_1") || header.number("PC1_2") || header.number("PC2_1");
        wcs.cd[0] = *step1 * (matrix ? header.number("PC1_1").value_or(1) : std::cos(turn));
        wcs.cd[1] = matrix ? *step1 * header.number("PC1_2").value_or(0) : -*step2 * std::sin(turn);
        wcs.cd[2] = matrix ? *step2 * header.number("PC2_1").value_or(0) : *step1 * std::sin(turn);
        wcs.cd[3] = *step2 * (matrix ? header.number("PC2_2").value_or(1) : std::cos(turn));
    } else {
        return std::nullopt;
    }
    if (bottomUp) {
        wcs.cd[1] = -wcs.cd[1];
        wcs.cd[3] = -wcs.cd[3];
    }
    const double det = wcs.cd[0] * wcs.cd[3] - wcs.cd[1] * wcs.cd[2];
    if (!(std::abs(det) > 1e-16) || std::abs(det) > 100) return std::nullopt;
    return wcs;
}

std::vector<FitsCard> wcsCards(const TangentWcs& wcs, double height, bool bottomUp,
                               const std::optional<sky::SipDistortion>& distortion) {
    const double down = bottomUp ? -1 : 1;
    const std::string kind = distortion ? "TAN-SIP" : "TAN";
    const char* const comment = distortion ? "gnomonic projection, distorted" : "gnomonic projection";
    std::vector<FitsCard> cards = {
        {"CTYPE1", "RA---" + kind, comment},
        {"CTYPE2", "DEC--" + kind, comment},
        {"CUNIT1", "deg"},
        {"CUNIT2", "deg"},
        {"CRVAL1", wcs.reference.ra, "right ascension of the reference pixel"},
        {"CRVAL2", wcs.reference.dec, "declination of the reference pixel"},
        {"CRPIX1", wcs.referencePixel.x + 1, "reference pixel, column"},
        {"CRPIX2", bottomUp ? height - wcs.referencePixel.y : wcs.referencePixel.y + 1,
         "reference pixel, row"},
        {"CD1_1", wcs.cd[0], "degrees per pixel"},
        {"CD1_2", wcs.cd[1] * down, "degrees per pixel"},
        {"CD2_1", wcs.cd[2], "degrees per pixel"},
        {"CD2_2", wcs.cd[3] * down, "degrees per pixel"},
        {"EQUINOX", 2000.0, "equinox of the world coordinates"},
        {"RADESYS", "ICRS", "frame of the world coordinates"}};
    if (distortion) {
        const sky::SipDistortion sip = bottomUp ? distortion->upsideDown() : *distortion;
        addPolynomial(cards, "A", sip.a, 2, "distortion along columns, pixels");
        addPolynomial(cards, "B", sip.b, 2, "distortion along rows, pixels");
        addPolynomial(cards, "AP", sip.ap, 0, "the same for the way back");
        addPolynomial(cards, "BP", sip.bp, 0, "the same for the way back");
    }
    return cards;
}

}  // namespace vantrel::fits
