// CFITSIO, wrapped: open files that are closed whatever happens, and failures as exceptions.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include <fitsio.h>

#include "fits/fits_units.h"
#include "fits/library_call.h"

namespace vantrel::fits {

class LibraryFile {
  public:
    /// Opens a file to be read, under its name for this process. Throws FitsError.
    explicit LibraryFile(const FitsFile& bytes);
    /// Opens a file to be changed; failures name it by `name`. Throws FitsError.
    static LibraryFile change(const std::filesystem::path& path, const std::filesystem::path& name) {
        return {path, READWRITE, name};
    }
    static LibraryFile create(const std::filesystem::path& path, const std::filesystem::path& name) {
        return {path, name};
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

    /// Moves to the unit that holds the image. Throws FitsError when the library sees another image there.
    void moveTo(const FitsImageUnit& image);

  private:
    LibraryFile(const std::filesystem::path& path, int mode, const std::filesystem::path& name);
    LibraryFile(const std::filesystem::path& path, const std::filesystem::path& name);

    std::filesystem::path name_;  // in messages
    fitsfile* file_ = nullptr;
    int status_ = 0;
};

}  // namespace vantrel::fits
