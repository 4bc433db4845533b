#include "engine/axis/chi_square.h"

#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {

namespace {

/// exp(x²) erfc(x); Abramowitz and Stegun, 7.1.23, where the factors leave the range of numbers.
double scaledComplement(double x) {
    if (x < 5) return std::exp(x * x) * std::erfc(x);
    const double square = 2 * x * x;
    return (1 - (1 - 3 / square) / square) / (x * std::sqrt(kPi));
}

}  // namespace

double logChiSquareTail(double value, int degreesOfFreedom) {
    if (degreesOfFreedom <= 0 || !(value > 0)) return 0;
    // All terms without their factor exp(-x/2). Two degrees of freedom more add (x/2)^(k/2) / Γ(k/2 + 1).
    const double half = value / 2;
    double sum = 0;
    double term = 1;  // what brings k = 0, whose tail is 0, to 2
    int k = 0;
    if (degreesOfFreedom % 2 == 1) {
        sum = scaledComplement(std::sqrt(half));
        term = std::sqrt(half) / std::tgamma(1.5);
        k = 1;
    }
    for (; k < degreesOfFreedom; k += 2) {
        sum += term;
        term *= half / (k / 2.0 + 1);
    }
    return std::log(sum) - half;
}

double chiSquareTail(double value, int degreesOfFreedom) {
    return std::exp(logChiSquareTail(value, degreesOfFreedom));
}

double chiSquareLimit(double probability, int degreesOfFreedom) {
    double low = 0;
    double high = 1;
    while (chiSquareTail(high, degreesOfFreedom) > probability && high < 1e6) high *= 2;
    for (int round = 0; round < 60; ++round) {
        const double middle = (low + high) / 2;
        (chiSquareTail(middle, degreesOfFreedom) > probability ? low : high) = middle;
    }
    return high;
}

}  // namespace vantrel::engine
