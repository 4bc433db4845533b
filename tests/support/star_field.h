// Drawn star fields: the catalogue's stars as round gaussians at their J2000 places, seen through known world
// coordinates.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "observatory/sky/star_catalog.h"
#include "observatory/sky/tangent_wcs.h"

namespace vantrel::test {

struct StarField {
    std::size_t width = 1392;
    std::size_t height = 1040;
    observatory::TangentWcs wcs;
    double fwhm = 2.8;             ///< pixels
    double tenthMagnitude = 8000;  ///< electrons of a star of magnitude 10
    double sky = 300;              ///< electrons per pixel
    double readNoise = 8;          ///< electrons
    double hotShare = 0;           ///< of all pixels; each gains 2,000 to 20,000 electrons
    bool mosaic = false;           ///< a colour sensor: levels of red, green and blue differ
    unsigned seed = 1;
};

/// World coordinates of an image of this size: centre, arcseconds per pixel, turn of the sky against the
/// rows, and whether it is mirrored.
inline observatory::TangentWcs wcsFor(std::size_t width, std::size_t height, observatory::SkyPosition centre,
                                      double scale, double turnDeg, bool mirrored) {
    const double c = std::cos(turnDeg * std::numbers::pi / 180) * scale / 3600;
    const double s = std::sin(turnDeg * std::numbers::pi / 180) * scale / 3600;
    const double hand = mirrored ? -1 : 1;
    return {centre,
            {(static_cast<double>(width) - 1) / 2, (static_cast<double>(height) - 1) / 2},
            {c, -s * hand, s, c * hand}};
}

/// A random direction, uniform on the sphere.
inline observatory::SkyPosition anywhere(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(-1, 1);
    return {180 + 180 * unit(random), std::asin(unit(random)) * 180 / std::numbers::pi};
}

class GaussianNoise {
  public:
    explicit GaussianNoise(unsigned seed) : random_(seed), values_(1U << 16U) {
        std::normal_distribution<float> normal;
        for (float& v : values_) v = normal(random_);
    }
    float next() { return values_[random_() & 0xFFFFU]; }

  private:
    std::mt19937 random_;
    std::vector<float> values_;
};

inline void drawStar(std::vector<float>& image, const StarField& field, double x, double y,
                     double electrons) {
    const double sigma = field.fwhm / 2.3548;
    const int reach = static_cast<int>(std::ceil(4.5 * sigma)) + 1;
    const int cx = static_cast<int>(std::lround(x));
    const int cy = static_cast<int>(std::lround(y));
    const double edge = 1 / (sigma * std::numbers::sqrt2);
    const auto share = [&](int pixel, double at) {
        return 0.5 * (std::erf((pixel + 0.5 - at) * edge) - std::erf((pixel - 0.5 - at) * edge));
    };
    for (int py = std::max(0, cy - reach); py <= std::min(static_cast<int>(field.height) - 1, cy + reach);
         ++py) {
        for (int px = std::max(0, cx - reach); px <= std::min(static_cast<int>(field.width) - 1, cx + reach);
             ++px) {
            image[static_cast<std::size_t>(py) * field.width + static_cast<std::size_t>(px)] +=
                static_cast<float>(electrons * share(px, x) * share(py, y));
        }
    }
}

/// The field as a 16-bit camera with one electron a count would record it.
inline std::vector<std::uint16_t> drawField(const observatory::StarCatalog* catalog, const StarField& field) {
    std::vector<float> image(field.width * field.height, static_cast<float>(field.sky));
    if (catalog != nullptr) {
        const auto centre =
            field.wcs.toSky({static_cast<double>(field.width) / 2, static_cast<double>(field.height) / 2});
        const double radius = observatory::separationDeg(centre, field.wcs.toSky({0, 0})) * 1.05 + 0.02;
        for (const auto& star :
             catalog->cone({.raDeg = centre.ra, .decDeg = centre.dec, .radiusDeg = radius})) {
            const auto at = field.wcs.toPixel({star.raDeg, star.decDeg});
            if (!at || std::abs(at->x) > 1e5 || std::abs(at->y) > 1e5) continue;
            drawStar(image, field, at->x, at->y,
                     field.tenthMagnitude * std::pow(10, 0.4 * (10 - star.magnitude)));
        }
    }
    std::mt19937 random(field.seed);
    if (field.mosaic) {
        const float shares[4] = {0.7F, 1.0F, 1.0F, 0.5F};
        for (std::size_t i = 0; i < image.size(); ++i)
            image[i] *= shares[i % field.width % 2 + 2 * (i / field.width % 2)];
    }
    std::uniform_int_distribution<std::size_t> place(0, image.size() - 1);
    std::uniform_real_distribution<float> heat(2000, 20000);
    const auto hot = static_cast<std::size_t>(field.hotShare * static_cast<double>(image.size()));
    for (std::size_t i = 0; i < hot; ++i) image[place(random)] += heat(random);
    GaussianNoise noise(field.seed);
    std::vector<std::uint16_t> counts(image.size());
    const auto read = static_cast<float>(field.readNoise * field.readNoise);
    for (std::size_t i = 0; i < image.size(); ++i) {
        const float value = image[i] + std::sqrt(std::max(0.0F, image[i]) + read) * noise.next();
        counts[i] = static_cast<std::uint16_t>(std::clamp(value + 0.5F, 0.0F, 65535.0F));
    }
    return counts;
}

}  // namespace vantrel::test
