// The operating system's name, as the log shows it and the choice of folders depends on it.
#pragma once

#include <optional>
#include <string>

#include "platform/desktop.h"

namespace vantrel::app {

/// "Error" without a version record; empty for a system that isn't known.
std::string GetOSName(const std::optional<platform::SystemVersion>& version);

}  // namespace vantrel::app
