#include "engine/sky_map.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {
namespace {

struct Point {
    double x = 0, y = 0;
};

Point pointOf(const PlaceOnSky& place) {
    const double radius = (90 - place.altitude) / 90;
    const double azimuth = degreesToRadians(place.azimuth);
    return {-radius * std::sin(azimuth), radius * std::cos(azimuth)};
}

constexpr double kGood = 5, kPoor = 30;  // arc-seconds

platform::Color colorFor(double sigma) {
    constexpr platform::Color kAmber = 0x0080C0;  // blue, green, red
    return sigma <= kGood ? platform::color::kDarkGreen : sigma <= kPoor ? kAmber : platform::color::kRed;
}

double radiusFor(double sigma) {
    constexpr double kLargest = 0.036, kSmallest = 0.008;  // of the horizon's radius, for 1" and 100"
    const double share = std::log(std::max(sigma, 1.)) / std::log(100.);
    return std::max(kSmallest, kLargest - (kLargest - kSmallest) * share);
}

void drawHorizon(std::vector<platform::Shape>& shapes, const Horizon& horizon) {
    constexpr int kStep = 5;  // degrees
    const auto at = [&](int azimuth) {
        const double degrees = azimuth;
        return pointOf({std::max(0.0, horizon.altitudeAt(degrees)), degrees});
    };
    for (int azimuth = 0; azimuth < 360; azimuth += kStep) {
        const Point a = at(azimuth), b = at(azimuth + kStep);
        shapes.push_back(platform::Line{.x1 = a.x, .y1 = a.y, .x2 = b.x, .y2 = b.y});
    }
}

}  // namespace

platform::Drawing skyMap(const std::vector<StartingPlace>& places, const Horizon& horizon,
                         const std::vector<Preflight::PlateAhead>& plates,
                         const std::optional<StartingPlace>& proposal) {
    platform::Drawing map;
    constexpr double kEdge = 1.12;  // radii of the horizon: room for the letters outside
    map.scale = {.left = -kEdge, .top = kEdge, .right = kEdge, .bottom = -kEdge};
    map.shapes.push_back(platform::Circle{.radius = 1});
    const auto print = [&](double x, double y, const char* text) {
        map.shapes.push_back(platform::DrawnText{.x = x, .y = y, .text = text});
    };
    print(-0.03, 1.12, "N");
    print(-0.03, -1.01, "S");
    print(-1.1, 0.06, "E");
    print(1.02, 0.06, "W");
    drawHorizon(map.shapes, horizon);
    constexpr double kToldApart = 0.3;  // separability of the adjusters; 1 at best
    for (const StartingPlace& place : places) {
        const Point at = pointOf(place.middle);
        map.shapes.push_back(platform::Circle{.x = at.x,
                                              .y = at.y,
                                              .radius = radiusFor(place.sigma),
                                              .filled = place.separability >= kToldApart,
                                              .color = colorFor(place.sigma)});
    }
    constexpr double kArm = 0.035;  // of the horizon's radius
    for (const Preflight::PlateAhead& plate : plates) {
        if (plate.place.altitude < 0) continue;
        const Point at = pointOf(plate.place);
        map.shapes.push_back(platform::Line{.x1 = at.x - kArm, .y1 = at.y, .x2 = at.x + kArm, .y2 = at.y});
        map.shapes.push_back(platform::Line{.x1 = at.x, .y1 = at.y - kArm, .x2 = at.x, .y2 = at.y + kArm});
    }
    if (proposal) {
        const Point at = pointOf(proposal->middle);
        map.shapes.push_back(platform::Circle{.x = at.x, .y = at.y, .radius = 0.06});
    }
    return map;
}

}  // namespace vantrel::engine
