// Calls into a library that may crash on hostile data, without taking the program along.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace vantrel::observatory {

/// The call failed by itself; what() is what it said.
class GuardedCallFailed : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Runs the call in a child process and returns its text. What the call throws arrives as GuardedCallFailed
/// with the same text; a crash, or more than two minutes, arrives as GuardedCallFailed with the text
/// `onCrash`. The call is refused memory beyond 4 GB. Its changes to memory are lost unless that is shared.
std::string callGuarded(const std::function<std::string()>& call, const std::string& onCrash);

}  // namespace vantrel::observatory
