// Files that are on the disk, and not only on their way there.
#pragma once

#include <filesystem>
#include <string_view>

namespace vantrel::platform {

/// Writes a whole new file, for its user's eyes, that has reached the disk when this returns; nothing stays of one
/// that hasn't. Throws std::system_error that names it.
void writeDurably(const std::filesystem::path& file, std::string_view text);

}  // namespace vantrel::platform
