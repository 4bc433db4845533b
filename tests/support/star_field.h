// Drawn star fields: the catalogue's stars as round gaussians at their J2000 places, seen through known world
// coordinates.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "sky/star_catalog.h"
#include "sky/tangent_wcs.h"
#include "support/star_frames.h"

namespace vantrel::test {

struct StarField {
    std::size_t width = 1392;
    std::size_t height = 1040;
    sky::TangentWcs wcs;
    double fwhm = 2.8;             ///< pixels
    double tenthMagnitude = 8000;  ///< electrons of a star of magnitude 10
    double sky = 300;              ///< electrons per pixel
    double readNoise = 8;          ///< electrons
    double hotShare = 0;           ///< of all pixels
    double radial = 0;             ///< share by which offsets from the centre grow at half the width
    double skew = 0;               ///< the same for offsets along the rows, with their sign
    bool mosaic = false;           ///< a colour sensor: levels of red, green and blue differ
    unsigned seed = 1;
};

/// Where the field's optics put what its world coordinates put there.
inline sky::PixelPosition distorted(const StarField& field, sky::PixelPosition at) {
    const double dx = at.x - (static_cast<double>(field.width) - 1) / 2;
    const double dy = at.y - (static_cast<double>(field.height) - 1) / 2;
    const double reach = static_cast<double>(field.width) / 2;
    const double growth = field.radial * (dx * dx + dy * dy) / (reach * reach);
    return {at.x + dx * (growth + field.skew * dx / reach), at.y + dy * growth};
}

/// World coordinates of an image of this size: centre, arcseconds per pixel, turn of the sky against the
/// rows, and whether it is mirrored.
inline sky::TangentWcs wcsFor(std::size_t width, std::size_t height, sky::SkyPosition centre, double scale,
                              double turnDeg, bool mirrored) {
    const double c = std::cos(turnDeg * std::numbers::pi / 180) * scale / 3600;
    const double s = std::sin(turnDeg * std::numbers::pi / 180) * scale / 3600;
    const double hand = mirrored ? -1 : 1;
    return {centre,
            {(static_cast<double>(width) - 1) / 2, (static_cast<double>(height) - 1) / 2},
            {c, -s * hand, s, c * hand}};
}

/// A random direction, uniform on the sphere.
inline sky::SkyPosition anywhere(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(-1, 1);
    return {180 + 180 * unit(random), std::asin(unit(random)) * 180 / std::numbers::pi};
}

/// The field as a 16-bit camera with one electron a count would record it.
inline std::vector<std::uint16_t> drawField(const sky::StarCatalog* catalog, const StarField& field) {
    FrameRecipe recipe;
    recipe.width = static_cast<int>(field.width);
    recipe.height = static_cast<int>(field.height);
    recipe.sky = field.sky;
    recipe.readNoise = field.readNoise;
    recipe.wrongPixels = field.hotShare;
    recipe.mosaic = field.mosaic;
    if (catalog != nullptr) {
        const auto centre =
            field.wcs.toSky({static_cast<double>(field.width) / 2, static_cast<double>(field.height) / 2});
        const double radius = sky::separationDeg(centre, field.wcs.toSky({0, 0})) * 1.05 + 0.02;
        for (const auto& star :
             catalog->cone({.raDeg = centre.ra, .decDeg = centre.dec, .radiusDeg = radius})) {
            const auto at = field.wcs.toPixel({star.raDeg, star.decDeg});
            if (!at || std::abs(at->x) > 1e5 || std::abs(at->y) > 1e5) continue;
            const sky::PixelPosition seen = distorted(field, *at);
            FrameStar drawn{seen.x, seen.y, field.fwhm, 1};
            drawn.peak = field.tenthMagnitude * std::pow(10, 0.4 * (10 - star.magnitude)) / drawn.flux();
            recipe.stars.push_back(drawn);
        }
    }
    static FramePainter painter(1);
    painter.startAt(field.seed);
    return std::get<std::vector<std::uint16_t>>(painter.paint(recipe).pixels());
}

}  // namespace vantrel::test
