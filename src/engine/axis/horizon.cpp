#include "engine/axis/horizon.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "platform/text.h"

namespace vantrel::engine {
namespace {

constexpr std::size_t kMostPoints = 100'000;  // one for each 13" around: more is no horizon

double around(double azimuth) {
    const double within = std::fmod(azimuth, 360);
    return within < 0 ? within + 360 : within;
}

}  // namespace

Horizon::Horizon(std::vector<Point> points) : points_(std::move(points)) {
    std::ranges::stable_sort(points_, {}, &Point::azimuth);
}

std::optional<Horizon> Horizon::parse(const std::string& text) {
    std::vector<Point> points;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        line.resize(std::min(line.find('#'), line.size()));
        std::ranges::replace_if(
            line, [](char c) { return c == ',' || c == ';' || c == '\t' || c == '\r'; }, ' ');
        std::istringstream words(line);
        std::string azimuth, altitude, more;
        if (!(words >> azimuth)) continue;
        words >> altitude;
        const auto a = platform::parseNumber(azimuth);
        const auto h = platform::parseNumber(altitude);
        if (!a || !h || words >> more || std::abs(*h) > 90 || std::abs(*a) > 360) return std::nullopt;
        if (points.size() == kMostPoints) return std::nullopt;
        points.push_back({around(*a), *h});
    }
    if (points.empty()) return std::nullopt;
    return Horizon(std::move(points));
}

double Horizon::altitudeAt(double azimuth) const {
    const double wanted = around(azimuth);
    const auto after = std::ranges::upper_bound(points_, wanted, {}, &Point::azimuth);
    const Point& next = after == points_.end() ? points_.front() : *after;
    const Point& last = after == points_.begin() ? points_.back() : *std::prev(after);
    const double gap = around(next.azimuth - last.azimuth);
    if (gap == 0) return last.altitude;
    return last.altitude + (next.altitude - last.altitude) * around(wanted - last.azimuth) / gap;
}

Horizon Horizon::notBelow(double altitude) const {
    Horizon raised = *this;
    for (Point& point : raised.points_) point.altitude = std::max(point.altitude, altitude);
    return raised;
}

}  // namespace vantrel::engine
