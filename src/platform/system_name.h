// What the operating system calls itself.
#pragma once

#include <filesystem>
#include <string>

namespace vantrel::platform {

/// The distribution's name from the system's own file (os-release), such as "Debian GNU/Linux 12 (bookworm)";
/// without one, kernel and release as uname tells them. `root` is where the system's files begin.
std::string systemName(const std::filesystem::path& root = "/");

}  // namespace vantrel::platform
