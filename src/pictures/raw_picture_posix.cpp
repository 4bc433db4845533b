#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

#include <libraw/libraw.h>

#include "pictures/picture_sink.h"

namespace vantrel::pictures {

namespace {

using OpenRaw = std::unique_ptr<libraw_data_t, void (*)(libraw_data_t*)>;

void check(int status) {
    if (status != LIBRAW_SUCCESS) throw PictureError(libraw_strerror(status));
}

/// The colours of the first two rows and columns.
void tellFilters(libraw_data_t* raw, PictureHead& facts) {
    if (raw->idata.filters == 0) return;
    for (int i = 0; i < 4; ++i) {
        const int colour = libraw_COLOR(raw, i / 2, i % 2);
        facts.filters[static_cast<std::size_t>(i)] = raw->idata.cdesc[std::clamp(colour, 0, 3)];
    }
}

void tellDate(libraw_data_t* raw, PictureHead& facts) {
    std::tm parts{};
    if (raw->other.timestamp <= 0 || ::gmtime_r(&raw->other.timestamp, &parts) == nullptr) return;
    std::strftime(facts.date.data(), facts.date.size(), "%Y-%m-%d", &parts);
}

}  // namespace

void readRaw(const std::filesystem::path& path, PictureSink& sink) {
    const OpenRaw raw(libraw_init(0), &libraw_close);
    if (!raw) throw PictureError("can't be read: the memory is short");
    check(libraw_open_file(raw.get(), path.c_str()));
    const auto& sizes = raw->sizes;
    PictureHead facts{sizes.width, sizes.height};
    tellFilters(raw.get(), facts);
    tellDate(raw.get(), facts);
    sink.begin(facts);
    check(libraw_unpack(raw.get()));
    if (raw->rawdata.raw_image == nullptr) throw PictureError("is of a kind of sensor that isn't read");
    const std::size_t pitch = sizes.raw_pitch / sizeof(unsigned short);
    std::vector<float> row;
    for (std::size_t y = 0; y < sizes.height; ++y) {
        const auto* const first = raw->rawdata.raw_image + (y + sizes.top_margin) * pitch + sizes.left_margin;
        row.assign(first, first + sizes.width);
        sink.addRow(row);
    }
}

}  // namespace vantrel::pictures
