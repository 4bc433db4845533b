#include "fits/fits_library.h"

#include <new>

#include "fits/fits_error.h"
#include "platform/paths.h"

namespace vantrel::fits {

namespace {

/// CFITSIO's own explanation of a status code.
std::string libraryError(int status) {
    if (status == MEMORY_ALLOCATION) return kTooMuchMemory;
    char text[FLEN_STATUS] = "";
    fits_get_errstatus(status, text);
    fits_clear_errmsg();
    return text;
}

}  // namespace

LibraryFile::LibraryFile(const FitsFile& bytes) : LibraryFile(bytes.nameToOpen(), READONLY, bytes.path()) {}

LibraryFile::LibraryFile(const std::filesystem::path& path, int mode, const std::filesystem::path& name)
    : name_(name) {
    check(fits_open_diskfile(&file_, platform::libraryName(path).c_str(), mode, &status_));
}

LibraryFile::LibraryFile(const std::filesystem::path& path, const std::filesystem::path& name) : name_(name) {
    check(fits_create_diskfile(&file_, platform::libraryName(path).c_str(), &status_));
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

void LibraryFile::moveTo(const FitsImageUnit& image) {
    check(fits_movabs_hdu(file_, image.unit.number, nullptr, &status_));
    int bitpix = 0;
    int axes = 0;
    LONGLONG sizes[3] = {0, 0, 1};
    check(fits_get_img_paramll(file_, 3, &bitpix, &axes, sizes, &status_));
    const auto& [width, height, planes] = image.layout;
    const bool same = axes <= 3 && sizes[0] == static_cast<LONGLONG>(width) &&
                      sizes[1] == static_cast<LONGLONG>(height) && sizes[2] == static_cast<LONGLONG>(planes);
    if (!same || (fits_is_compressed_image(file_, &status_) != 0) != image.tiled) failFits(name_, "damaged");
}

}  // namespace vantrel::fits
