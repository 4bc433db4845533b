// sky-picture: what a camera sees of the real sky, for test servers that play one.
//
//   sky-picture --ra DEG --dec DEG [--roll DEG] ...          J2000; roll from north through east to the top
//   sky-picture --mount-ra HOURS --mount-dec DEG ...         what a mount says, of date; its axis may be off:
//       --latitude DEG --longitude DEG --azimuth ARCMIN --elevation ARCMIN --rotation DEG
//   both: --utc TIME --width N --height N --pixel UM --focal MM --seconds S --seed N
//
// Writes the rows of 16-bit counts, little endian, to the standard output. With --where 1 it writes the J2000
// place and the roll instead.

#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "observatory/telescopes/mount_axis.h"
#include "observatory/telescopes/renderer.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "sky/compact_catalog.h"
#include "sky/epoch.h"
#include "sky/focal_plane.h"

namespace {

using namespace vantrel::sky;
using namespace vantrel::observatory;

class Options {
  public:
    Options(int argc, char** argv) {
        for (int i = 1; i + 1 < argc; i += 2) values_[argv[i]] = argv[i + 1];
        if (argc % 2 == 0) throw std::runtime_error(std::string("no value for ") + argv[argc - 1]);
    }

    bool has(const std::string& name) const { return values_.contains(name); }
    std::string text(const std::string& name, const std::string& otherwise) const {
        return has(name) ? values_.at(name) : otherwise;
    }
    double number(const std::string& name, double otherwise) const {
        return has(name) ? vantrel::platform::toNumber(values_.at(name)) : otherwise;
    }
    std::size_t count(const std::string& name, double otherwise) const {
        return static_cast<std::size_t>(number(name, otherwise));
    }

  private:
    std::map<std::string, std::string> values_;
};

/// Unit vectors at right angles, J2000.
struct View {
    Vector3 ahead;
    Vector3 up;  // of the camera before its own rotation
    double rotation = 0;
};

Vector3 northOf(const Vector3& direction) {
    const SkyPosition position = positionOf(direction);
    return vantrel::sky::direction(position.ra * kDegree, (position.dec + 90) * kDegree);
}

Vector3 atRightAngles(const Vector3& v, const Vector3& to) {
    const double along = dot(v, to);
    return normalized({v[0] - along * to[0], v[1] - along * to[1], v[2] - along * to[2]});
}

View fixedView(const Options& options) {
    const Vector3 ahead = directionOf({options.number("--ra", 0), options.number("--dec", 0)});
    return {ahead, northOf(ahead), options.number("--roll", 0)};
}

/// From the local frame, whose x axis is on the meridian, to right ascensions of date.
Vector3 toRightAscension(const Vector3& v, double siderealTime) {
    const double c = std::cos(siderealTime * kHour);
    const double s = std::sin(siderealTime * kHour);
    return {c * v[0] - s * v[1], s * v[0] + c * v[1], v[2]};
}

View mountView(const Options& options, const SkyOfDate& sky) {
    const double siderealTime = sky.siderealTime(options.number("--longitude", 0));
    const double hourAngle = 15 * (siderealTime - options.number("--mount-ra", 0));
    const double declination = options.number("--mount-dec", 0);
    const Matrix3 turn = mountToSky({options.number("--azimuth", 0), options.number("--elevation", 0)},
                                    options.number("--latitude", 50));
    const auto catalogue = [&](double dec) {
        return sky.catalogue(toRightAscension(turn * hourAngleDirection(hourAngle, dec), siderealTime));
    };
    constexpr double kNearby = 0.01;  // degrees: aberration turns far directions differently
    const Vector3 ahead = catalogue(declination);
    return {ahead, atRightAngles(catalogue(declination + kNearby), ahead), options.number("--rotation", 0)};
}

double rollOf(const View& view) {
    const Vector3 north = northOf(view.ahead);
    const Vector3 east = cross(north, view.ahead);
    return view.rotation + std::atan2(dot(view.up, east), dot(view.up, north)) / kDegree;
}

std::vector<std::uint16_t> draw(const Options& options, const View& view, double epoch) {
    const double arcsecPerPixel =
        options.number("--pixel", 6.45) / 1000 / options.number("--focal", 370) / kArcsecond;
    CameraMounting mounting;
    mounting.scale = arcsecPerPixel / 3600;
    mounting.width = options.number("--width", 1392);
    mounting.height = options.number("--height", 1040);
    mounting.rotation = view.rotation;
    const FocalPlane plane(view.ahead, view.up, cross(view.up, view.ahead), mounting);

    const SkyPosition centre = positionOf(view.ahead);
    ConeQuery query;
    query.raDeg = centre.ra;
    query.decDeg = centre.dec;
    query.radiusDeg = 1.01 * plane.cornerDistance();
    query.epochYear = epoch;
    const double seconds = options.number("--seconds", 1);
    std::vector<StarSpot> stars;
    for (const CatalogStar& star : CompactCatalog::openBuiltIn()->cone(query))
        if (const auto pixel = plane.pixel(directionOf({star.raDeg, star.decDeg})))
            stars.push_back(
                {pixel->x, pixel->y, 20'000 * std::pow(10, -0.4 * (star.magnitude - 10)) * seconds});

    SensorExposure exposure;
    exposure.width = options.count("--width", 1392);
    exposure.height = options.count("--height", 1040);
    exposure.sigma = 3 / 2.3548 / arcsecPerPixel;  // seeing of 3" between half maxima
    exposure.sky = 30 * seconds;
    NoiseSource noise(options.count("--seed", 1));
    return drawFrame(exposure, stars, noise);
}

void write(const std::vector<std::uint16_t>& pixels) {
    std::string bytes;
    bytes.reserve(2 * pixels.size());
    for (const std::uint16_t pixel : pixels) {
        bytes += static_cast<char>(pixel & 0xFFU);
        bytes += static_cast<char>(pixel >> 8U);
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
        throw std::runtime_error("the picture can't be written");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const Options options(argc, argv);
        const auto utc = vantrel::platform::parseInstant(options.text("--utc", "2026-11-24T20:00:00Z"));
        if (!utc) throw std::runtime_error("--utc is no time");
        const SkyOfDate sky(*utc);
        const View view = options.has("--mount-ra") ? mountView(options, sky) : fixedView(options);
        if (options.has("--where")) {
            const SkyPosition place = positionOf(view.ahead);
            std::printf("%.7f %.7f %.5f\n", place.ra, place.dec, rollOf(view));
        } else {
            write(draw(options, view, sky.julianEpoch()));
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sky-picture: %s\n", error.what());
        return 2;
    }
}
