// A small file's contents.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace vantrel::platform {

/// Throws std::system_error that names the file when it can't be read, holds more than so many bytes, or is
/// no regular file: pipes and devices would keep the reader waiting, or never end.
std::string contentsOf(const std::filesystem::path& file, std::size_t mostBytes);

}  // namespace vantrel::platform
