// Words that come from a server, made fit for the log and the windows.
#pragma once

#include <string>
#include <string_view>

namespace vantrel::hosts {

/// One line of valid UTF-8 without control characters and of bounded length. What is none becomes "?" or a
/// blank.
std::string oneLine(std::string_view words);

}  // namespace vantrel::hosts
