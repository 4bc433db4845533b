// The failure of reading or writing a FITS file.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace vantrel::fits {

/// A file that can't be read or written as FITS; what() is one line that names the file.
class FitsError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline constexpr const char* kTooMuchMemory = "damaged: it asks for more memory than an image takes";

[[noreturn]] inline void failFits(const std::filesystem::path& path, const std::string& why) {
    throw FitsError(path.string() + ": " + why);
}

}  // namespace vantrel::fits
