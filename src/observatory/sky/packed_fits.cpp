#include <algorithm>
#include <cerrno>
#include <limits>
#include <sstream>
#include <system_error>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "observatory/sky/fits_error.h"
#include "observatory/sky/fits_library.h"
#include "observatory/sky/raw_file.h"

namespace vantrel::observatory {

namespace {

/// Pixels that the library unpacked into a file in memory.
class UnpackedPixels : public FitsPixels {
  public:
    UnpackedPixels(const std::filesystem::path& path, int memory) : file_(path, memory) {}
    void setWidth(std::size_t width) { width_ = width; }
    void read(std::size_t first, std::span<float> out) const override {
        file_.read(first * width_ * sizeof(float), std::as_writable_bytes(out));
    }

  private:
    RawFile file_;
    std::size_t width_ = 0;
};

/// Unpacks the image into the memory file as floats, planes averaged, and returns its size and cards.
std::string unpackByLibrary(const std::filesystem::path& path, std::int64_t mostBytes, int memory) {
    LibraryFile file(path, READONLY);
    const std::string primary = file.cardImages();
    const FitsLayout layout = file.findImage();
    checkLayout(path, layout);
    checkHolds(path, mostBytes, layout);
    const auto width = static_cast<std::size_t>(layout.width);
    const auto planes = static_cast<float>(layout.planes);
    float blank = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> row(width);
    std::vector<float> mean(width);
    for (LONGLONG y = 1; y <= layout.height; ++y) {
        std::fill(mean.begin(), mean.end(), 0.0F);
        for (LONGLONG plane = 1; plane <= layout.planes; ++plane) {
            LONGLONG first[3] = {1, y, plane};
            file.check(fits_read_pixll(file.get(), TFLOAT, first, layout.width, &blank, row.data(), nullptr,
                                       file.status()));
            for (std::size_t x = 0; x < width; ++x) mean[x] += row[x] / planes;
        }
        const std::size_t bytes = width * sizeof(float);
        if (::write(memory, mean.data(), bytes) != static_cast<ssize_t>(bytes))
            failFits(path, std::generic_category().message(errno));
    }
    return std::to_string(layout.width) + " " + std::to_string(layout.height) + "\n" + file.cardImages() +
           primary;
}

/// Size and header from the answer of unpackByLibrary.
OpenedFits describedBy(const std::string& answer) {
    OpenedFits opened;
    const std::size_t line = answer.find('\n');
    std::istringstream(answer.substr(0, line)) >> opened.width >> opened.height;
    for (std::size_t at = line + 1; at + kFitsCard <= answer.size(); at += kFitsCard) {
        opened.header.addCardImage(std::string_view(answer).substr(at, kFitsCard));
    }
    return opened;
}

}  // namespace

OpenedFits openPackedFits(const std::filesystem::path& path) {
    const std::int64_t mostBytes = checkUnpackedSize(path);
    const int memory = ::memfd_create("vantrel-fits", MFD_CLOEXEC);
    if (memory < 0) failFits(path, std::generic_category().message(errno));
    auto pixels = std::make_unique<UnpackedPixels>(path, memory);
    OpenedFits opened =
        describedBy(guardedLibraryCall(path, [&] { return unpackByLibrary(path, mostBytes, memory); }));
    pixels->setWidth(opened.width);
    opened.pixels = std::move(pixels);
    return opened;
}

}  // namespace vantrel::observatory
