#include "platform/whole_file.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantrel::platform {
namespace {

[[noreturn]] void fail(const std::filesystem::path& file, int error, const char* why = "") {
    throw std::system_error(error, std::generic_category(), "Can't read " + file.string() + why);
}

class Descriptor {
  public:
    /// Waits for nobody, not even at a pipe that nobody writes to.
    explicit Descriptor(const std::filesystem::path& file)
        : number_(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (number_ < 0) fail(file, errno);
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return number_; }

  private:
    int number_;
};

}  // namespace

std::string contentsOf(const std::filesystem::path& file, std::size_t mostBytes) {
    const Descriptor descriptor(file);
    struct stat status {};
    if (::fstat(descriptor.number(), &status) != 0) fail(file, errno);
    if (S_ISDIR(status.st_mode)) fail(file, EISDIR);
    if (!S_ISREG(status.st_mode)) fail(file, EINVAL, ", which is no regular file");

    std::string contents;
    for (;;) {
        constexpr std::size_t kPiece = 65536;
        const std::size_t before = contents.size();
        contents.resize(std::min(before + kPiece, mostBytes + 1));
        const ssize_t got = ::read(descriptor.number(), contents.data() + before, contents.size() - before);
        if (got < 0 && errno != EINTR) fail(file, errno);
        contents.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (contents.size() > mostBytes) fail(file, EFBIG);
        if (got == 0) return contents;
    }
}

}  // namespace vantrel::platform
