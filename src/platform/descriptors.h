// Standard input and output, pipes and sockets by their numbers, as the event loop watches them.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace vantrel::platform {

inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1;

/// Those that have something to read, or whose other end was closed. Waits for one at most so long; negative
/// numbers are nobody.
std::vector<int> waitForInput(const std::vector<int>& descriptors, Milliseconds longest);

struct Received {
    enum class Kind { kBytes, kInterrupted, kEnd };
    Kind kind = Kind::kEnd;
    std::size_t bytes = 0;
};

/// Waits until there is something to read; a signal may interrupt that.
Received readFrom(int descriptor, std::span<char> out);

/// False when it can't be written.
bool writeWhole(int descriptor, std::string_view text);

}  // namespace vantrel::platform
