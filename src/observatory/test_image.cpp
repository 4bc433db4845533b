#include "observatory/test_image.h"

#include <cmath>
#include <numbers>
#include <system_error>

#include "fits/fits_writing.h"
#include "observatory/telescopes/noise.h"
#include "observatory/telescopes/renderer.h"
#include "sky/star_catalog.h"
#include "sky/tangent_wcs.h"

namespace vantrel::observatory {
namespace {

constexpr double kArcsecPerPixel = 1.7;
constexpr double kRollDegrees = 4;
constexpr double kEpoch = 2026;              // of the stars' places, the year of DATE-OBS
constexpr double kTenthMagnitude = 100'000;  // electrons
constexpr sky::SkyPosition kTarget{166.4, -58.75};

SensorExposure exposure() {
    SensorExposure exposure;
    exposure.width = 640;
    exposure.height = 480;
    exposure.sigma = 1.1;
    exposure.sky = 60;
    return exposure;
}

/// North is down the rows, apart from the roll.
sky::TangentWcs worldCoordinates(const SensorExposure& frame) {
    const double scale = kArcsecPerPixel / 3600;
    const double c = scale * std::cos(kRollDegrees * std::numbers::pi / 180);
    const double s = scale * std::sin(kRollDegrees * std::numbers::pi / 180);
    const auto middle = [](std::size_t pixels) { return (static_cast<double>(pixels) - 1) / 2; };
    return {kTarget, {middle(frame.width), middle(frame.height)}, {c, -s, s, c}};
}

std::vector<StarSpot> starsOn(const SensorExposure& frame, const sky::StarCatalog& catalog) {
    const sky::TangentWcs sky = worldCoordinates(frame);
    sky::ConeQuery query;
    query.raDeg = kTarget.ra;
    query.decDeg = kTarget.dec;
    query.radiusDeg = sky::separationDeg(kTarget, sky.toSky({0, 0})) + 0.01;
    query.epochYear = kEpoch;
    std::vector<StarSpot> spots;
    for (const sky::CatalogStar& star : catalog.cone(query)) {
        if (const auto pixel = sky.toPixel({star.raDeg, star.decDeg}))
            spots.push_back(
                {pixel->x, pixel->y, kTenthMagnitude * std::pow(10, 0.4 * (10 - star.magnitude))});
    }
    return spots;
}

}  // namespace

void provideTestImage(const std::filesystem::path& folder, const sky::CatalogSource& openCatalog) {
    const std::filesystem::path file = folder / kTestImageName;
    std::error_code ignored;
    if (std::filesystem::exists(file, ignored)) return;
    const SensorExposure frame = exposure();
    NoiseSource noise(1);
    fits::writeFits(file, frame.width, frame.height, drawFrame(frame, starsOn(frame, *openCatalog()), noise),
                    {{"OBJECT", std::string("NGC 3532"), "test image of Vantrel, a drawn star field"},
                     {"OBJCTRA", std::string("11 05 36"), "target, J2000"},
                     {"OBJCTDEC", std::string("-58 45 00"), "target, J2000"},
                     {"DATE-OBS", std::string("2026-01-01T00:00:00"), "UTC"},
                     {"EXPTIME", 10.0, "seconds"},
                     {"ROWORDER", std::string("TOP-DOWN"), "the first row is the top"}});
}

}  // namespace vantrel::observatory
