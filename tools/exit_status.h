// How the small programs end.
#pragma once

#include <functional>
#include <stdexcept>

namespace vantrel::tools {

/// What the caller asks can't be done; what() is one line.
struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The exit status: what the work returns; 2 with a line on standard error, behind the program's name, for
/// what it throws.
int exitStatusOf(const char* program, const std::function<int()>& work);

}  // namespace vantrel::tools
