#include "pictures/png_writing.h"

#include <stdexcept>
#include <string>
#include <system_error>

#include <png.h>

#include "platform/durable_file.h"
#include "platform/own_program.h"
#include "platform/paths.h"

namespace vantrel::pictures {

void writePng(const std::filesystem::path& path, std::size_t width, std::size_t height,
              std::span<const std::uint8_t> rgb) {
    if (rgb.size() != 3 * width * height || rgb.empty())
        throw std::invalid_argument("pixels and size disagree");
    std::filesystem::path partial = path;
    partial += "." + std::to_string(platform::processNumber()) + ".part";
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(width);
    png.height = static_cast<png_uint_32>(height);
    png.format = PNG_FORMAT_RGB;
    std::error_code error;
    std::string reason;
    if (png_image_write_to_file(&png, platform::libraryName(partial).c_str(), 0, rgb.data(), 0, nullptr) ==
        0) {
        reason = png.message;
    } else {
        platform::takePlace(partial, path, error);
        if (error) reason = error.message();
    }
    if (reason.empty()) return;
    std::filesystem::remove(partial, error);
    throw std::runtime_error(path.string() + " can't be written: " + reason);
}

}  // namespace vantrel::pictures
