#include "correction/history_chart.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/text.h"

namespace vantrel::correction {

using namespace platform;

namespace {

constexpr double kLeastShown = 0.01;  // arc-minutes; a logarithm needs a bottom

double heightOf(double arcMinutes) { return std::log10(std::max(arcMinutes, kLeastShown)); }

/// From below to above, whole decades.
struct Decades {
    int lowest = 0, highest = 1;
};

Decades decadesOf(std::span<const engine::PastMeasurement> measurements) {
    double least = 10, most = 1;
    for (const auto& one : measurements) {
        least = std::min(least, 60 * one.amplitude);
        most = std::max(most, 60 * one.amplitude + one.sigma.value_or(0) / 60);
    }
    const int lowest = static_cast<int>(std::floor(heightOf(least)));
    return {lowest, std::max(lowest + 1, static_cast<int>(std::ceil(heightOf(most))))};
}

}  // namespace

std::string nightOf(Instant when) {
    return formatTime(civilLocal(when - std::chrono::hours{12}), "yyyy-MM-dd");
}

Drawing historyChart(std::span<const engine::PastMeasurement> measurements, std::size_t selected) {
    if (measurements.empty()) return {};
    std::vector<double> places;
    std::vector<std::pair<double, std::string>> nights;  // where each begins
    for (const auto& one : measurements) {
        const std::string night = nightOf(one.when);
        const bool begins = nights.empty() || nights.back().second != night;
        places.push_back(places.empty() ? 0 : places.back() + (begins ? 2 : 1));
        if (begins) nights.emplace_back(places.back(), night);
    }
    const double width = std::max(places.back() + 2, 10.0);
    const auto [lowest, highest] = decadesOf(measurements);
    const double height = highest - lowest;

    Drawing drawing;
    drawing.scale = {.left = -1 - 0.1 * width,
                     .top = highest + 0.12 * height,
                     .right = width - 1,
                     .bottom = lowest - 0.12 * height};
    for (int decade = lowest; decade <= highest; ++decade) {
        const double y = decade;
        drawing.shapes.push_back(Line{.x1 = -1, .y1 = y, .x2 = width - 1, .y2 = y});
        drawing.shapes.push_back(DrawnText{
            .x = drawing.scale.left, .y = y + 0.05 * height, .text = toText(std::pow(10, decade)) + "'"});
    }
    const double room = 0.2 * width;  // that a date takes, with a gap
    double free = drawing.scale.left;
    for (const auto& [start, night] : nights) {
        if (start < free) continue;
        drawing.shapes.push_back(DrawnText{.x = start, .y = lowest - 0.01 * height, .text = night});
        free = start + room;
    }
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        const double arcMinutes = 60 * measurements[i].amplitude;
        const Color color = i == selected ? color::kRed : color::kWindowText;
        if (const auto& sigma = measurements[i].sigma)
            drawing.shapes.push_back(Line{.x1 = places[i],
                                          .y1 = std::max<double>(lowest, heightOf(arcMinutes - *sigma / 60)),
                                          .x2 = places[i],
                                          .y2 = heightOf(arcMinutes + *sigma / 60),
                                          .color = color});
        drawing.shapes.push_back(Circle{.x = places[i],
                                        .y = heightOf(arcMinutes),
                                        .radius = 0.01 * width,
                                        .filled = true,
                                        .color = color});
    }
    return drawing;
}

}  // namespace vantrel::correction
