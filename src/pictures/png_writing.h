// Colour pictures as PNG files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace vantrel::pictures {

/// Red, green and blue of each pixel, row after row from the top. An existing file is replaced at once, when
/// the new one is complete. Throws std::runtime_error, whose text names the file.
void writePng(const std::filesystem::path& path, std::size_t width, std::size_t height,
              std::span<const std::uint8_t> rgb);

}  // namespace vantrel::pictures
