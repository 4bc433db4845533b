// The command lines by which capture programs call other solvers. The program is one of those when it is
// started under its name: `astap` (or `astap_cli`) and `solve-field`. Options that mean nothing here are
// passed over.
#pragma once

#include <string>
#include <vector>

namespace vantrel::tools {

using Front = int (*)(const std::vector<std::string>& arguments);

/// Null for any other name. The front returns the exit status; it may throw as `solve` does.
Front frontNamed(const std::string& program);

}  // namespace vantrel::tools
