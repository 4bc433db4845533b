// What makes an address one that nobody can guess.
#pragma once

#include <array>
#include <cstdint>

namespace vantrel::page {

/// 128 bits that nobody can guess.
using Secret = std::array<std::uint8_t, 16>;

/// From the system's generator. Throws std::runtime_error when it has none to give.
Secret systemSecret();

}  // namespace vantrel::page
