#include "observatory/telescopes/noise.h"

#include <cmath>
#include <numbers>

namespace vantrel::observatory {
namespace {

constexpr std::size_t kSteps = 65536;

/// Midpoints, in probability, of equally likely steps of the normal distribution.
std::vector<float> makeNormalSteps() {
    constexpr std::size_t kHalf = kSteps / 2;
    std::vector<double> upper(kHalf);
    double x = 0;
    double squares = 0;
    for (std::size_t i = 0; i < kHalf; ++i) {
        const double tail = (static_cast<double>(kHalf - i) - 0.5) / kSteps;  // probability above x
        for (int round = 0; round < 4; ++round) {
            const double density = std::exp(-x * x / 2) * std::numbers::inv_sqrtpi / std::numbers::sqrt2;
            x += (std::erfc(x / std::numbers::sqrt2) / 2 - tail) / density;
        }
        upper[i] = x;
        squares += x * x;
    }
    const double scale = 1 / std::sqrt(squares / kHalf);  // makes up for the variance inside the steps
    std::vector<float> steps(kSteps);
    for (std::size_t i = 0; i < kHalf; ++i) {
        steps[kHalf + i] = static_cast<float>(scale * upper[i]);
        steps[kHalf - 1 - i] = -steps[kHalf + i];
    }
    return steps;
}

}  // namespace

NoiseSource::NoiseSource(std::uint64_t seed) : seed_(seed), state_{} {
    for (std::uint64_t& word : state_) {
        seed += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = seed;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        word = mixed ^ (mixed >> 31U);
    }
}

const std::vector<float>& NoiseSource::normalSteps() {
    static const std::vector<float> kNormalSteps = makeNormalSteps();
    return kNormalSteps;
}

}  // namespace vantrel::observatory
