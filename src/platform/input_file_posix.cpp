#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/input_file.h"

namespace vantrel::platform {
namespace {

[[noreturn]] void fail(int error, const char* what) {
    throw std::system_error(error, std::generic_category(), what);
}

int descriptorOf(std::intptr_t handle) { return static_cast<int>(handle); }

}  // namespace

InputFile::InputFile(std::intptr_t handle, std::filesystem::path path)
    : handle_(handle), path_(std::move(path)) {}

InputFile::InputFile(const std::filesystem::path& path)
    : handle_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (handle_ < 0) fail(errno, "open");
    struct stat status {};
    if (::fstat(descriptorOf(handle_), &status) != 0) {
        const int error = errno;
        ::close(descriptorOf(handle_));
        fail(error, "fstat");
    }
    if (!S_ISREG(status.st_mode)) kind_ = S_ISDIR(status.st_mode) ? Kind::kFolder : Kind::kOther;
    size_ = static_cast<std::uint64_t>(status.st_size);
}

InputFile InputFile::temporary() {
    const int descriptor = ::memfd_create("vantrel-fits", MFD_CLOEXEC);
    if (descriptor < 0) fail(errno, "memfd_create");
    return InputFile(std::intptr_t{descriptor});
}

InputFile::~InputFile() { ::close(descriptorOf(handle_)); }

std::size_t InputFile::read(std::uint64_t offset, std::span<std::byte> out) const {
    std::size_t done = 0;
    while (done < out.size()) {
        const auto got = ::pread(descriptorOf(handle_), out.data() + done, out.size() - done,
                                 static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail(errno, "read");
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void InputFile::append(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const auto put =
            ::pwrite(descriptorOf(handle_), bytes.data(), bytes.size(), static_cast<off_t>(size_));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) fail(put < 0 ? errno : ENOSPC, "write");
        size_ += static_cast<std::uint64_t>(put);
        bytes = bytes.subspan(static_cast<std::size_t>(put));
    }
}

std::filesystem::path InputFile::nameToOpen() const { return "/proc/self/fd/" + std::to_string(handle_); }

int InputFile::libraryDescriptor() const {
    const int own = ::dup(descriptorOf(handle_));
    if (own < 0) fail(errno, "dup");
    return own;
}

}  // namespace vantrel::platform
