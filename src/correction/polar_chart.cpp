#include "correction/polar_chart.h"

#include <cmath>

#include "engine/angles.h"
#include "platform/text.h"

namespace vantrel::correction {

using namespace platform;

namespace {

constexpr double kRingSpacing = 0.8;

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
        drawing.shapes.push_back(Text{.x = x * n, .y = y * n, .text = text});
    };
    print(0.78, -0.7, formatNumber(range.radius(), "0"));
    print(0.65, -0.8, "arc-min");
    print(-0.05, 0.98, "Up");
    print(-0.1, -0.85, "Down");
    print(0.9, 0.04, "E");
    print(-0.95, 0.04, "W");

    const double distance = kRingSpacing * arcMinutes / range.step;
    drawing.shapes.push_back(Circle{.x = distance * std::cos(engine::degreesToRadians(angle - 90)),
                                    .y = distance * std::sin(engine::degreesToRadians(angle + 90)),
                                    .radius = 0.05 * n,
                                    .filled = true,
                                    .color = dotColor});
    return drawing;
}

}  // namespace vantrel::correction
