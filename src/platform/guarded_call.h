// Calls into a library that may crash on hostile data, without taking the program along.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

namespace vantrel::platform {

/// What a call may take.
struct GuardLimits {
    std::size_t bytes = 0;  ///< of memory, beyond what the process has
    unsigned seconds = 1;   ///< of the processor's time, and a few times as much by the clock
};

/// The call failed by itself; what() is what it said.
class GuardedCallFailed : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A signal ended the call.
class GuardedCallCrashed : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class GuardedCallTookTooLong : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Runs the call in a child process and returns its text. What the call throws arrives as GuardedCallFailed
/// with the same text. The call is refused memory beyond its limit, and ended when its time is over. Its
/// changes to memory are lost unless that is shared. Throws std::system_error when there can be no child.
std::string callGuarded(const GuardLimits& limits, const std::function<std::string()>& call);

}  // namespace vantrel::platform
