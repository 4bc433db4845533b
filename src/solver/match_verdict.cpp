#include "solver/match_verdict.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace vantrel::solver {

namespace {

constexpr std::size_t kFree = 3;  // matches that any hypothesis has

/// log10 of P(X >= hits) for X binomial(trials, p), by its largest term and the geometric series that bounds
/// the rest.
double binomialTailLog10(std::size_t trials, std::size_t hits, double p) {
    if (hits == 0 || static_cast<double>(hits) <= static_cast<double>(trials) * p) return 0;
    if (hits > trials) hits = trials;
    const auto n = static_cast<double>(trials);
    const auto k = static_cast<double>(hits);
    const double term = std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1) + k * std::log(p) +
                        (n - k) * std::log1p(-p);
    const double ratio = (n - k) / (k + 1) * p / (1 - p);
    return std::min(0.0, (term - std::log1p(-std::min(ratio, 0.999))) / std::numbers::ln10);
}

}  // namespace

double chanceLog10(std::span<const PredictedStar> predicted, std::size_t imageStars, double tolerance,
                   double area) {
    double best = 0;
    int tried = 0;
    for (std::size_t brightest = 10;; brightest *= 2) {
        const std::size_t image = std::min(brightest, imageStars);
        const double p =
            std::min(0.5, static_cast<double>(image) * std::numbers::pi * tolerance * tolerance / area);
        for (const std::size_t factor : {1U, 2U, 4U}) {
            const std::size_t catalogue = std::min(image * factor, predicted.size());
            const auto hits = static_cast<std::size_t>(
                std::count_if(predicted.begin(), predicted.begin() + static_cast<std::ptrdiff_t>(catalogue),
                              [&](const PredictedStar& s) {
                                  return s.imageRank >= 0 && s.imageRank < static_cast<int>(image);
                              }));
            ++tried;
            if (hits > kFree) best = std::min(best, binomialTailLog10(catalogue - kFree, hits - kFree, p));
            if (catalogue == predicted.size()) break;
        }
        if (image == imageStars) break;
    }
    return std::min(0.0, best + std::log10(tried));
}

}  // namespace vantrel::solver
