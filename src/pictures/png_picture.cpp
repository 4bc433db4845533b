#include <cstdint>
#include <vector>

#include <png.h>

#include "pictures/picture_sink.h"
#include "platform/paths.h"

namespace vantrel::pictures {

void readPng(const std::filesystem::path& path, PictureSink& sink) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&png, platform::libraryName(path).c_str()) == 0)
        throw PictureError(png.message);
    sink.begin({png.width, png.height});
    png.format = PNG_FORMAT_LINEAR_Y;
    std::vector<std::uint16_t> values(std::size_t{png.width} * png.height);
    const bool read = png_image_finish_read(&png, nullptr, values.data(), 0, nullptr) != 0;
    if (!read) throw PictureError(png.message);
    std::vector<float> row;
    for (auto at = values.begin(); at != values.end(); at += png.width) {
        row.assign(at, at + png.width);
        sink.addRow(row);
    }
}

}  // namespace vantrel::pictures
