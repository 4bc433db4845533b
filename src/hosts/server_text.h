// Words that come from a server, made fit for the log and the windows.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantrel::hosts {

/// One line of valid UTF-8 without control characters and of bounded length. What is none becomes "?" or a
/// blank.
std::string oneLine(std::string_view words);

/// A port from 1 to 65535, and nothing beside it.
std::optional<int> parsePort(std::string_view text);

}  // namespace vantrel::hosts
