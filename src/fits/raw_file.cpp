#include "fits/raw_file.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fits/fits_error.h"

namespace vantrel::fits {

namespace {

std::string errorText(int error) { return std::generic_category().message(error); }

}  // namespace

RawFile::RawFile(const std::filesystem::path& path)
    : path_(path), descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor_ < 0) failFits(path, errorText(errno));
    struct stat status {};
    const bool regular = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    size_ = static_cast<std::size_t>(status.st_size);
    if (!regular) {
        ::close(descriptor_);
        failFits(path, "not a file");
    }
}

RawFile RawFile::inMemory(const std::filesystem::path& path) {
    const int descriptor = ::memfd_create("vantrel-fits", MFD_CLOEXEC);
    if (descriptor < 0) failFits(path, errorText(errno));
    return {path, descriptor};
}

RawFile::~RawFile() { ::close(descriptor_); }

void RawFile::read(std::size_t offset, std::span<std::byte> out) const {
    while (!out.empty()) {
        const auto got = ::pread(descriptor_, out.data(), out.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) failFits(path_, got < 0 ? errorText(errno) : "ends before its last pixel");
        offset += static_cast<std::size_t>(got);
        out = out.subspan(static_cast<std::size_t>(got));
    }
}

void RawFile::append(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const auto put = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(size_));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) failFits(path_, errorText(put < 0 ? errno : ENOSPC));
        size_ += static_cast<std::size_t>(put);
        bytes = bytes.subspan(static_cast<std::size_t>(put));
    }
}

bool RawFile::isGzip() const {
    constexpr std::size_t kSmallest = 18;
    std::byte magic[2] = {};
    if (size_ >= kSmallest) read(0, magic);
    return magic[0] == std::byte{0x1f} && magic[1] == std::byte{0x8b};
}

}  // namespace vantrel::fits
