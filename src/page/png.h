// Grey pixels as the contents of a PNG file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrel::page {

/// Row after row from the top. Empty when it can't be made.
std::string pngOf(int width, int height, const std::vector<std::uint8_t>& pixels);

}  // namespace vantrel::page
