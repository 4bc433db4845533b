#include "observatory/sky/fits_library.h"

#include <algorithm>
#include <span>

#include "observatory/sky/fits_error.h"
#include "observatory/sky/guarded_call.h"
#include "observatory/sky/raw_file.h"

namespace vantrel::observatory {

namespace {

constexpr std::int64_t kMaxUnpackedBytes = 2'000'000'000;
/// Deflated data (RFC 1951) take at least a byte for 1032 of theirs, and no way of packing images takes less
/// than a byte for about twice as many pixels, unless nothing is on them.
constexpr std::int64_t kMaxInflation = 1032;
constexpr std::int64_t kMaxPixelsInByte = 2 * kMaxInflation;
constexpr const char* kTooSmall = "claims to hold more than a file of its size can";

/// CFITSIO's own explanation of a status code.
std::string libraryError(int status) {
    if (status == MEMORY_ALLOCATION) return "damaged: it asks for more memory than an image takes";
    char text[FLEN_STATUS] = "";
    fits_get_errstatus(status, text);
    fits_clear_errmsg();
    return text;
}

}  // namespace

LibraryFile::LibraryFile(const std::filesystem::path& path, int mode, const std::filesystem::path& name)
    : name_(name.empty() ? path : name) {
    check(fits_open_diskfile(&file_, path.c_str(), mode, &status_));
}

LibraryFile::LibraryFile(const std::filesystem::path& path, const std::filesystem::path& name) : name_(name) {
    check(fits_create_diskfile(&file_, path.c_str(), &status_));
}

LibraryFile::~LibraryFile() {
    int ignored = 0;
    if (file_ != nullptr) fits_close_file(file_, &ignored);
    fits_clear_errmsg();
}

void LibraryFile::check(int status) const {
    if (status != 0) failFits(name_, libraryError(status));
}

void LibraryFile::close() {
    fitsfile* file = file_;
    file_ = nullptr;
    check(fits_close_file(file, &status_));
}

std::string LibraryFile::cardImages() {
    std::string images;
    int count = 0;
    check(fits_get_hdrspace(file_, &count, nullptr, &status_));
    for (int i = 1; i <= count; ++i) {
        char card[FLEN_CARD] = "";
        check(fits_read_record(file_, i, card, &status_));
        std::string image(card);
        image.resize(kFitsCard, ' ');
        images += image;
    }
    return images;
}

FitsHeader LibraryFile::header() {
    FitsHeader header;
    const std::string images = cardImages();
    for (std::size_t at = 0; at < images.size(); at += kFitsCard) {
        header.addCardImage(std::string_view(images).substr(at, kFitsCard));
    }
    return header;
}

FitsLayout LibraryFile::findImage() {
    int units = 0;
    check(fits_get_num_hdus(file_, &units, &status_));
    for (int unit = 1; unit <= std::min(units, 1000); ++unit) {
        int type = 0;
        check(fits_movabs_hdu(file_, unit, &type, &status_));
        const bool compressed = fits_is_compressed_image(file_, &status_) != 0;
        if (type != IMAGE_HDU && !compressed) continue;
        int bitpix = 0;
        int axes = 0;
        LONGLONG sizes[3] = {0, 0, 1};
        check(fits_get_img_paramll(file_, 3, &bitpix, &axes, sizes, &status_));
        if (axes == 2 || axes == 3) return {bitpix, sizes[0], sizes[1], sizes[2]};
    }
    failFits(name_, "holds no image");
}

std::int64_t checkUnpackedSize(const std::filesystem::path& path) {
    const RawFile file(path);
    if (file.size() < 18) failFits(path, "not a FITS file");
    const auto bytes = static_cast<std::int64_t>(file.size());
    if (!file.isGzip()) return bytes;
    unsigned char tail[4];  // the size of the content (RFC 1952)
    file.read(file.size() - 4, std::as_writable_bytes(std::span(tail)));
    const std::int64_t size = tail[0] + (tail[1] << 8) + (tail[2] << 16) + (std::int64_t{tail[3]} << 24);
    if (size > kMaxUnpackedBytes) failFits(path, "the image is too large");
    if (size > kMaxInflation * bytes) failFits(path, kTooSmall);
    return kMaxInflation * bytes;
}

void checkHolds(const std::filesystem::path& path, std::int64_t bytes, const FitsLayout& layout) {
    if (layout.width * layout.height / kMaxPixelsInByte > bytes) failFits(path, kTooSmall);
}

std::string guardedLibraryCall(const std::filesystem::path& path, const std::function<std::string()>& call) {
    try {
        return callGuarded(call, path.string() + ": damaged");
    } catch (const GuardedCallFailed& e) {
        throw FitsError(e.what());
    }
}

}  // namespace vantrel::observatory
