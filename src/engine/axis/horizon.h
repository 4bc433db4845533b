// How high the sky begins at a place: trees, houses, the dome's edge.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantrel::engine {

/// Degrees; azimuth from north through east.
class Horizon {
  public:
    /// The same all around.
    explicit Horizon(double altitude = 0) : points_{{0, altitude}} {}

    /// A line "azimuth altitude" for each point, in any order, between them straight; blanks or a comma in
    /// between, '#' begins a comment. Nothing where a line is something else or no point is there.
    static std::optional<Horizon> parse(const std::string& text);

    double altitudeAt(double azimuth) const;

    /// Raised to this altitude where it is lower.
    Horizon notBelow(double altitude) const;

  private:
    struct Point {
        double azimuth = 0, altitude = 0;
    };
    explicit Horizon(std::vector<Point> points);

    std::vector<Point> points_;  // by azimuth in [0, 360); at least one
};

}  // namespace vantrel::engine
