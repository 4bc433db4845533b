#include <csetjmp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <jpeglib.h>

#include "pictures/picture_sink.h"
#include "platform/paths.h"

namespace vantrel::pictures {

namespace {

struct Failure {
    jpeg_error_mgr library{};  // stands first: the library hands out its address
    std::jmp_buf back{};
    char why[JMSG_LENGTH_MAX] = {};
};

void fail(j_common_ptr jpeg) {
    auto* const failure = reinterpret_cast<Failure*>(jpeg->err);
    jpeg->err->format_message(jpeg, failure->why);
    std::longjmp(failure->back, 1);
}

void keepQuiet(j_common_ptr /*jpeg*/, int /*level*/) {}

struct Line {
    std::vector<JSAMPLE> samples;
    std::vector<float> values;
};

using OpenFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

}  // namespace

void readJpeg(const std::filesystem::path& path, PictureSink& sink) {
    const OpenFile file(std::fopen(platform::libraryName(path).c_str(), "rb"), &std::fclose);
    if (!file) throw PictureError("can't be read");
    Failure failure;
    jpeg_decompress_struct jpeg{};
    jpeg.err = jpeg_std_error(&failure.library);
    failure.library.error_exit = fail;
    failure.library.emit_message = keepQuiet;
    const auto line = std::make_unique<Line>();
    // The library leaves by this way when it fails: what is to be destroyed then stands before it, and stays
    // where it is.
    if (setjmp(failure.back) != 0) {
        jpeg_destroy_decompress(&jpeg);
        throw PictureError(failure.why);
    }
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = JCS_GRAYSCALE;
    sink.begin({jpeg.image_width, jpeg.image_height});
    jpeg_start_decompress(&jpeg);
    line->samples.resize(jpeg.output_width);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW at = line->samples.data();
        jpeg_read_scanlines(&jpeg, &at, 1);
        line->values.assign(line->samples.begin(), line->samples.end());
        sink.addRow(line->values);
    }
    jpeg_destroy_decompress(&jpeg);
}

}  // namespace vantrel::pictures
