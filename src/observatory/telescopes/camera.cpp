#include "observatory/telescopes/camera.h"

#include <algorithm>
#include <cmath>

#include "helpers/angle_texts.h"
#include "platform/image_array.h"

namespace vantrel::observatory {
namespace {

using sky::kDegree;
using sky::Vector3;

constexpr double kTenthMagnitudeRate = 20'000;  // electrons a second
constexpr double kWidthPerSigma = 2.354820045;  // of a gaussian at half its height: 2 sqrt(2 ln 2)

double electronRate(double magnitude) { return kTenthMagnitudeRate * std::pow(10, -0.4 * (magnitude - 10)); }

/// Turns right ascension into the local equatorial frame at this sidereal time (hours), and back.
Vector3 toHourAngle(const Vector3& v, double siderealTime) {
    const double c = std::cos(siderealTime * sky::kHour);
    const double s = std::sin(siderealTime * sky::kHour);
    return {c * v[0] + s * v[1], -s * v[0] + c * v[1], v[2]};
}
Vector3 toRightAscension(const Vector3& v, double siderealTime) { return toHourAngle(v, -siderealTime); }

/// The direction with its altitude changed, at the same azimuth.
Vector3 atAltitude(const Vector3& v, double latitude, double altitude) {
    const Vector3 up = zenith(latitude);
    const double height = sky::dot(v, up);
    const Vector3 level{v[0] - height * up[0], v[1] - height * up[1], v[2] - height * up[2]};
    const double length = std::sqrt(sky::dot(level, level));
    if (length < 1e-12) return v;  // in the zenith nothing is lifted
    const double c = std::cos(altitude * kDegree) / length;
    const double s = std::sin(altitude * kDegree);
    return {c * level[0] + s * up[0], c * level[1] + s * up[1], c * level[2] + s * up[2]};
}

/// "2026-11-24T20:00:00.000".
std::string isoTime(platform::Instant instant) {
    const platform::CivilTime t = platform::civilUtc(instant);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03d", t.year, t.month, t.day, t.hour,
                  t.minute, t.second, t.millisecond);
    return text;
}

std::string spaced(double value, bool withPlus) {
    return (withPlus && value >= 0 ? "+" : "") + helpers::formatSeconds(value, {" ", " ", ""}, 0);
}

/// Hours that never show as 24 00 00.
double wholeSeconds(double hours) { return std::fmod(std::round(hours * 3600), 86400) / 3600; }

}  // namespace

Camera::Camera(const Mount& mount, NoiseSource& noise, sky::CatalogSource catalog)
    : mount_(mount), noise_(noise), openCatalog_(std::move(catalog)) {}

sky::FocalPlane Camera::focalPlane(const TubeAttitude& pointing) const {
    sky::CameraMounting mounting;
    mounting.scale = settings_.pixelSize / 1000 / settings_.focalLength / kDegree;
    mounting.width = settings_.width;
    mounting.height = settings_.height;
    mounting.rotation = settings_.rotation;
    mounting.mirrored = settings_.mirrored;
    return {pointing.ahead, pointing.up, pointing.east, mounting};
}

std::vector<StarSpot> Camera::starsInView(platform::Instant instant) {
    if (!catalog_) catalog_ = openCatalog_();
    const sky::SkyOfDate sky(instant);
    const double siderealTime = sky.siderealTime(mount_.settings().longitude);
    const double latitude = mount_.settings().latitude;
    const TubeAttitude pointing = mount_.pointing();
    const sky::FocalPlane plane = focalPlane(pointing);
    const sky::Refraction refraction(settings_.air);

    Vector3 seen = pointing.ahead;
    if (settings_.refraction)
        seen = atAltitude(seen, latitude, refraction.trueAltitude(altAzOf(seen, latitude).altitude));
    const sky::SkyPosition centre = sky::positionOf(sky.catalogue(toRightAscension(seen, siderealTime)));

    sky::ConeQuery query;
    query.raDeg = centre.ra;
    query.decDeg = centre.dec;
    query.radiusDeg = std::min(89.0, 1.01 * plane.cornerDistance() + 30 * settings_.seeing / 3600);
    query.epochYear = sky.julianEpoch();
    query.faintestMagnitude = settings_.limitingMagnitude;

    std::vector<StarSpot> spots;
    for (const sky::CatalogStar& star : catalog_->cone(query)) {
        Vector3 direction =
            toHourAngle(sky.apparent(sky::directionOf({star.raDeg, star.decDeg})), siderealTime);
        if (settings_.refraction) {
            const double altitude = altAzOf(direction, latitude).altitude;
            direction = atAltitude(direction, latitude, refraction.observedAltitude(altitude));
        }
        if (const auto pixel = plane.pixel(direction))
            spots.push_back({pixel->x, pixel->y, electronRate(star.magnitude) * settings_.exposureTime});
    }
    return spots;
}

/// The stars with their light in this shot.
std::vector<StarSpot> Camera::starsOf(const Shot& shot, platform::Instant start) {
    if (!shot.light) return {};
    std::vector<StarSpot> stars = starsInView(start);
    const double share = shot.transmission * shot.seconds / settings_.exposureTime;
    for (StarSpot& star : stars) star.electrons *= share;
    return settings_.imageMotion > 0 ? movedByAir(std::move(stars), shot.seconds) : stars;
}

std::vector<StarSpot> Camera::movedByAir(std::vector<StarSpot> stars, double seconds) {
    const double arcsecPerPixel = settings_.pixelSize / 1000 / settings_.focalLength / sky::kArcsecond;
    const double sigma = settings_.imageMotion / arcsecPerPixel / std::sqrt(std::max(seconds, 1.0));
    const double right = sigma * noise_.gaussian(), down = sigma * noise_.gaussian();
    for (StarSpot& star : stars) {
        star.x += right;
        star.y += down;
    }
    return stars;
}

SensorExposure Camera::exposure(const Shot& shot) const {
    SensorExposure exposure;
    exposure.width = static_cast<std::size_t>(settings_.width);
    exposure.height = static_cast<std::size_t>(settings_.height);
    const double arcsecPerPixel = settings_.pixelSize / 1000 / settings_.focalLength / sky::kArcsecond;
    exposure.sigma = settings_.seeing / kWidthPerSigma / arcsecPerPixel;
    exposure.sky = shot.light ? settings_.skyLevel * shot.seconds * shot.transmission : 0;
    exposure.readNoise = settings_.readNoise;
    exposure.gain = settings_.gain;
    exposure.bias = settings_.bias;
    const double hot = settings_.hotPixels < 1 ? settings_.hotPixels * settings_.width * settings_.height
                                               : settings_.hotPixels;
    exposure.hotPixels = static_cast<std::size_t>(std::lround(hot));
    exposure.window = shot.window;
    return exposure;
}

LatentPicture Camera::expose(platform::Instant start, const std::string& telescope, const Shot& shot) {
    const SensorExposure exposed = exposure(shot);
    NoiseSource noise = noise_;
    noise_.skip(noiseOf(exposed));
    return [exposed, noise, stars = starsOf(shot, start), cards = header(start, telescope, shot)]() mutable {
        auto pixels = drawFrame(exposed, stars, noise);
        const std::size_t width = exposed.window ? exposed.window->width : exposed.width;
        const std::size_t height = exposed.window ? exposed.window->height : exposed.height;
        return imaging::Picture{
            std::make_shared<const platform::ImageArray>(width, height, std::move(pixels)), cards};
    };
}

std::vector<fits::FitsCard> Camera::header(platform::Instant start, const std::string& telescope,
                                           const Shot& shot) const {
    const ReadWindow window = shot.window.value_or(ReadWindow{});
    const auto whole = [](std::size_t number) { return static_cast<std::int64_t>(number); };
    const char* const type = shot.light ? "Light Frame" : shot.seconds > 0 ? "Dark Frame" : "Bias Frame";
    const MountCounts reading = mount_.reading();
    const double rightAscension = wholeSeconds(reading.rightAscension);
    return {
        {"DATE-OBS", isoTime(start), "UTC at the start of the exposure"},
        {"EXPTIME", shot.seconds, "seconds"},
        {"EXPOSURE", shot.seconds, "seconds"},
        {"IMAGETYP", std::string(type), ""},
        {"XPIXSZ", settings_.pixelSize * static_cast<double>(window.binX), "micrometres, after binning"},
        {"YPIXSZ", settings_.pixelSize * static_cast<double>(window.binY), "micrometres, after binning"},
        {"XBINNING", whole(window.binX), ""},
        {"YBINNING", whole(window.binY), ""},
        {"XORGSUBF", whole(window.left), "binned pixels"},
        {"YORGSUBF", whole(window.top), "binned pixels"},
        {"EGAIN", settings_.gain, "electrons per count"},
        {"FOCALLEN", settings_.focalLength, "mm"},
        {"OBJCTRA", spaced(rightAscension, false), "the mount's reading, equinox of date"},
        {"OBJCTDEC", spaced(reading.declination, true), "the mount's reading, equinox of date"},
        {"SITELAT", spaced(mount_.settings().latitude, true), "degrees north"},
        {"SITELONG", spaced(mount_.settings().longitude, true), "degrees east"},
        {"INSTRUME", std::string("Simulated camera"), ""},
        {"TELESCOP", telescope, ""},
        {"SWCREATE", std::string("Vantrel observatory"), ""},
        {"ROWORDER", std::string("TOP-DOWN"), "the first row is the top"},
    };
}

}  // namespace vantrel::observatory
