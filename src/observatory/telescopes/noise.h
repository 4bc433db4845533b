// The chance in the simulated sky: one generator from which everything random is drawn.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantrel::observatory {

/// The generator xoshiro256++ (Blackman and Vigna 2021, ACM TOMS 47, 36), started by splitmix64. The same
/// seed gives the same numbers on every machine.
class NoiseSource {
  public:
    explicit NoiseSource(std::uint64_t seed);

    /// What it was started with: for patterns that belong to the device, such as hot pixels.
    std::uint64_t seed() const { return seed_; }

    std::uint64_t bits() {
        const std::uint64_t result = rotated(state_[0] + state_[3], 23) + state_[0];
        const std::uint64_t shifted = state_[1] << 17U;
        state_[2] ^= state_[0];
        state_[3] ^= state_[1];
        state_[1] ^= state_[2];
        state_[0] ^= state_[3];
        state_[2] ^= shifted;
        state_[3] = rotated(state_[3], 45);
        return result;
    }

    /// Goes on as if bits() had been asked so many times.
    void skip(std::size_t times) {
        for (; times > 0; --times) bits();
    }

    /// Evenly in [0, 1).
    double uniform() { return static_cast<double>(bits() >> 11U) * 0x1p-53; }

    /// Normally distributed with mean 0 and variance 1, in 65536 steps out to 4.3.
    double gaussian() { return normalSteps()[bits() >> 48U]; }

    /// The steps that gaussian() draws from, for loops that make four numbers of each bits().
    static const std::vector<float>& normalSteps();

  private:
    static std::uint64_t rotated(std::uint64_t value, unsigned by) {
        return (value << by) | (value >> (64 - by));
    }

    std::uint64_t seed_;
    std::array<std::uint64_t, 4> state_;
};

}  // namespace vantrel::observatory
