#include "fits/fits_file.h"

#include <string>

namespace vantrel::fits {

FitsFile::FitsFile(const std::filesystem::path& path) : path_(path), file_(path) {
    if (file_.isGzip()) unpacking_.emplace(path, file_);
}

FitsFile::FitsFile(const std::string& name, std::span<const std::byte> bytes)
    : path_(name), file_(RawFile::inMemory(name)) {
    file_.append(bytes);
    if (file_.isGzip()) unpacking_.emplace(path_, file_);
}

bool FitsFile::reach(std::size_t bytes) {
    return unpacking_ ? unpacking_->reach(bytes) : bytes <= file_.size();
}

std::filesystem::path FitsFile::nameToOpen() const { return bytes().bytes().nameToOpen(); }

}  // namespace vantrel::fits
