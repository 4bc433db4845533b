#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/mapped_file.h"

namespace vantrel::platform {

namespace {

[[noreturn]] void fail(int error, const std::filesystem::path& path) {
    throw std::system_error(error, std::generic_category(), path.string());
}

}  // namespace

MappedFile::MappedFile(const std::filesystem::path& path, bool readAll) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) fail(errno, path);
    struct stat status {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(file);
        fail(EINVAL, path);
    }
    size_ = static_cast<std::size_t>(status.st_size);
    if (size_ > 0) {
        void* address =
            ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE | (readAll ? MAP_POPULATE : 0), file, 0);
        const int error = errno;
        if (address == MAP_FAILED) {
            ::close(file);
            fail(error, path);
        }
        data_ = static_cast<const std::byte*>(address);
    }
    ::close(file);
}

MappedFile::~MappedFile() {
    if (data_ != nullptr) ::munmap(const_cast<std::byte*>(data_), size_);
}

}  // namespace vantrel::platform
