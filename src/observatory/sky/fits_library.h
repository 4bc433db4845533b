// CFITSIO, wrapped: open files that are closed whatever happens, and failures as exceptions.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include <fitsio.h>

#include "observatory/sky/fits_header.h"
#include "observatory/sky/opened_fits.h"

namespace vantrel::observatory {

class LibraryFile {
  public:
    /// Opens a file; `mode` is READONLY or READWRITE. Failures name it by its path, or by `name`. Throws
    /// FitsError.
    LibraryFile(const std::filesystem::path& path, int mode, const std::filesystem::path& name = {});
    static LibraryFile create(const std::filesystem::path& path, const std::filesystem::path& name) {
        return LibraryFile(path, name);
    }
    ~LibraryFile();
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    fitsfile* get() const { return file_; }
    int* status() { return &status_; }
    /// Throws FitsError with the library's explanation unless the status is 0.
    void check(int status) const;
    /// Closes the file now, so that what can't be written is known.
    void close();

    /// All cards of the current unit, 80 characters each.
    std::string cardImages();
    FitsHeader header();
    /// Moves to the first header-data unit that holds an image of two or three axes.
    FitsLayout findImage();

  private:
    LibraryFile(const std::filesystem::path& path, const std::filesystem::path& name);

    std::filesystem::path name_;  // in messages
    fitsfile* file_ = nullptr;
    int status_ = 0;
};

/// Files that unpack to more than any camera's image, or than they can hold, are refused before a byte of
/// them is unpacked: throws FitsError. Returns the most bytes of FITS that the file can be.
std::int64_t checkUnpackedSize(const std::filesystem::path& path);

/// Throws FitsError when an image of this layout can't come out of so many bytes.
void checkHolds(const std::filesystem::path& path, std::int64_t bytes, const FitsLayout& layout);

/// Runs what uses the library in a process of its own, as the library crashes on some damaged files. Throws
/// FitsError for a crash and for what the call throws.
std::string guardedLibraryCall(const std::filesystem::path& path, const std::function<std::string()>& call);

}  // namespace vantrel::observatory
