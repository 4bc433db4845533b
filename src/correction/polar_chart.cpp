#include "correction/polar_chart.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "engine/angles.h"
#include "platform/text.h"

namespace vantrel::correction {

using namespace platform;

namespace {

constexpr double kRingSpacing = 0.8;
// Shares of the chart's half width
constexpr double kDot = 0.05;
constexpr double kCross = 0.09;  // seen when the dot is on it
constexpr double kRim = 0.95;

struct Place {
    double x = 0, y = 0;
};

double unitsPerArcMinute(const ChartRange& range) { return kRingSpacing / range.step; }

/// In the chart's units.
Place placeOf(const ChartRange& range, double arcMinutes, double angle) {
    const double distance = kRingSpacing * arcMinutes / range.step;
    return {distance * std::cos(engine::degreesToRadians(angle - 90)),
            distance * std::sin(engine::degreesToRadians(angle + 90))};
}

bool onChart(const ChartRange& range, const Place& place) {
    return std::hypot(place.x, place.y) <= kRim * range.rings;
}

}  // namespace

ChartRange chartRange(double arcMinutes) {
    const int step = arcMinutes <= 10 ? 1 : arcMinutes <= 100 ? 10 : 100;
    return {static_cast<int>(arcMinutes / step) + 1, step};
}

Drawing polarChart(double arcMinutes, double angle, Color dotColor) {
    const ChartRange range = chartRange(arcMinutes);
    const double n = range.rings;

    Drawing drawing;
    drawing.scale = {.left = -n, .top = n, .right = n, .bottom = -n};
    for (int ring = 1; ring <= range.rings; ++ring)
        drawing.shapes.push_back(Circle{.radius = kRingSpacing * ring});
    drawing.shapes.push_back(Line{.x1 = -0.85 * n, .x2 = 0.85 * n});
    drawing.shapes.push_back(Line{.y1 = -0.85 * n, .y2 = 0.85 * n});

    const auto print = [&](double x, double y, const std::string& text) {
        drawing.shapes.push_back(DrawnText{.x = x * n, .y = y * n, .text = text});
    };
    print(0.78, -0.7, formatNumber(range.radius(), "0"));
    print(0.65, -0.8, "arc-min");
    print(-0.05, 0.98, "Up");
    print(-0.1, -0.85, "Down");
    print(0.9, 0.04, "E");
    print(-0.95, 0.04, "W");

    const Place dot = placeOf(range, arcMinutes, angle);
    drawing.shapes.push_back(
        Circle{.x = dot.x, .y = dot.y, .radius = kDot * n, .filled = true, .color = dotColor});
    return drawing;
}

Shapes ringFigures(const ChartRange& range) {
    constexpr int kParts = 4;
    const int every = (range.rings + kParts - 1) / kParts;
    Shapes figures;
    for (int ring = range.rings - every; ring > 0; ring -= every) {
        const double diagonal = kRingSpacing * ring * std::numbers::sqrt2 / 2;
        figures.push_back(DrawnText{.x = diagonal, .y = diagonal, .text = std::to_string(ring * range.step)});
    }
    return figures;
}

Shapes estimateMarks(const ChartRange& range, const engine::AxisEstimate& estimate) {
    if (!estimate.valid()) return {};
    const double n = range.rings;
    const double arcMinutes = 60 * estimate.written.ErrorAmplitude;
    const Place place = placeOf(range, arcMinutes, estimate.written.ErrorAngle);
    if (!onChart(range, place)) {
        const double inwards = n / std::hypot(place.x, place.y);
        const auto at = [&](double share) {
            return Place{place.x * inwards * share, place.y * inwards * share};
        };
        return {Line{at(0.82).x, at(0.82).y, at(kRim).x, at(kRim).y, color::kWindowText},
                DrawnText{-0.98 * n, -0.89 * n, "Least squares: " + formatNumber(arcMinutes, "0.0") + "'"}};
    }
    Shapes marks{Cross{.x = place.x, .y = place.y, .reach = kCross * n}};
    if (!estimate.covariance) return marks;
    // A half turn of the sky, as between both hemispheres' ends, leaves an ellipse as it is.
    const engine::ErrorEllipse ellipse = estimate.covariance->ellipse();
    const double units = unitsPerArcMinute(range) / 60;
    if (ellipse.major * units > kDot * n)
        marks.push_back(Ellipse{.x = place.x,
                                .y = place.y,
                                .major = ellipse.major * units,
                                .minor = ellipse.minor * units,
                                .direction = ellipse.direction});
    return marks;
}

Shapes poleMarks(const ChartRange& range, const engine::Site& site) {
    const double n = range.rings;
    const double lift = 60 * (engine::refractedPoleAltitude(site) - engine::truePoleAltitude(site));
    const double hemisphere = site.latitude < 0 ? -1 : 1;
    const double y = hemisphere * unitsPerArcMinute(range) * lift;
    constexpr double kTextHeight = 0.1;
    if (std::abs(y) < 2 * kDot * n || !onChart(range, {0, y})) return {};
    return {Line{.x1 = -kDot * n, .y1 = y, .x2 = kDot * n, .y2 = y},
            DrawnText{.x = 0.07 * n, .y = y + kTextHeight / 2 * n, .text = "Refracted pole"},
            DrawnText{.x = 0.07 * n, .y = hemisphere > 0 ? 0 : kTextHeight * n, .text = "True pole"}};
}

Shapes toleranceRing(const ChartRange& range, double arcMinutes) {
    const double radius = unitsPerArcMinute(range) * arcMinutes;
    if (radius < kDot * range.rings || radius > kRim * range.rings) return {};
    return {Ellipse{.major = radius, .minor = radius, .color = color::kDarkGreen}};
}

Shapes earlierDots(const ChartRange& range, std::span<const engine::PolarError> earlier, Color color) {
    constexpr std::size_t kMost = 20;
    constexpr double kNewest = 0.85;
    constexpr double kFading = 0.86;
    Shapes dots;
    const auto shown = earlier.last(std::min(earlier.size(), kMost));
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const Place place = placeOf(range, 60 * shown[i].ErrorAmplitude, shown[i].ErrorAngle);
        const double age = static_cast<double>(shown.size() - 1 - i);
        if (onChart(range, place))
            dots.push_back(Circle{.x = place.x,
                                  .y = place.y,
                                  .radius = 0.6 * kDot * range.rings,
                                  .filled = true,
                                  .color = color,
                                  .strength = kNewest * std::pow(kFading, age)});
    }
    return dots;
}

}  // namespace vantrel::correction
