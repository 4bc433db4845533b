#include "engine/axis/chi_square.h"

#include <cmath>

namespace vantrel::engine {

double chiSquareTail(double value, int degreesOfFreedom) {
    if (degreesOfFreedom <= 0 || !(value > 0)) return 1;
    // Two degrees of freedom more add (x/2)^(k/2) exp(-x/2) / Γ(k/2 + 1).
    const double half = value / 2;
    double tail = 0;
    int k = 0;
    double term = std::exp(-half);  // what brings k = 0, whose tail is 0, to 2
    if (degreesOfFreedom % 2 == 1) {
        tail = std::erfc(std::sqrt(half));
        k = 1;
        term *= std::sqrt(half) / std::tgamma(1.5);
    }
    for (; k < degreesOfFreedom; k += 2) {
        tail += term;
        term *= half / (k / 2.0 + 1);
    }
    return tail;
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
