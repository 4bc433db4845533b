// Files that are always whole: on the disk, and not only on their way there, or in the place of others.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace vantrel::platform {

/// Writes a whole new file, for its user's eyes, that has reached the disk when this returns; nothing stays
/// of one that hasn't. Throws std::system_error that names it.
void writeDurably(const std::filesystem::path& file, std::string_view text);

/// Gives the file the name `target`, whose file goes; who has that one open keeps it.
void takePlace(const std::filesystem::path& file, const std::filesystem::path& target,
               std::error_code& error);

}  // namespace vantrel::platform
