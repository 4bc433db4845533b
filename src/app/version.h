// Which program this is.
#pragma once

#include <string>

namespace vantrel::app {

inline constexpr const char* kProgramTitle = "Vantrel";

/// Major, minor version and revision: "1.0.2".
std::string versionText();

}  // namespace vantrel::app
