#include "solver/solved_plate.h"

#include <cmath>

#include "sky/vector3.h"

namespace vantrel::solver {

Orientation orientationOf(const std::array<double, 4>& cd) {
    const double hand = cd[0] * cd[3] - cd[1] * cd[2] < 0 ? -1 : 1;
    const double t = std::atan2(cd[2] - hand * cd[1], cd[0] + hand * cd[3]);
    return {t / sky::kDegree, 3600 * (cd[0] * std::cos(t) + cd[2] * std::sin(t)),
            3600 * (cd[3] * std::cos(t) - cd[1] * std::sin(t))};
}

std::array<double, 4> matrixOf(const Orientation& orientation) {
    const double t = orientation.rollDeg * sky::kDegree;
    const double h = orientation.scaleX / 3600;
    const double v = orientation.scaleY / 3600;
    return {h * std::cos(t), -v * std::sin(t), h * std::sin(t), v * std::cos(t)};
}

}  // namespace vantrel::solver
