#include "page/png.h"

#include <png.h>

namespace vantrel::page {

std::string pngOf(int width, int height, const std::vector<std::uint8_t>& pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_GRAY;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string file(size, '\0');
    if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr) == 0) return {};
    file.resize(size);
    return file;
}

}  // namespace vantrel::page
