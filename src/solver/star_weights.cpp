#include "solver/star_weights.h"

#include <algorithm>
#include <cmath>

namespace vantrel::solver {

namespace {

constexpr double kExpectationCounts = 4;  // as so many residuals
constexpr double kLeast = 0.01;           // pixels
constexpr double kMost = 10;              // a fit that scatters so much is none
constexpr int kHalvings = 20;             // to a millionth of the way between them

}  // namespace

double excessError(std::span<const WeighedResidual> residuals, std::size_t coefficients, double expected) {
    const double freedom =
        std::max(0.0, 2 * (static_cast<double>(residuals.size()) - static_cast<double>(coefficients)));
    const auto isTooSmall = [&](double excess) {
        double squares = kExpectationCounts * expected * expected / (excess * excess);
        for (const WeighedResidual& r : residuals)
            squares += r.distance * r.distance / (r.error * r.error + excess * excess);
        return squares > freedom + kExpectationCounts;
    };
    double least = std::log(kLeast);
    double most = std::log(kMost);
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = (least + most) / 2;
        (isTooSmall(std::exp(middle)) ? least : most) = middle;
    }
    return std::exp(most);
}

}  // namespace vantrel::solver
