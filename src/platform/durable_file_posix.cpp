#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "platform/durable_file.h"

namespace vantrel::platform {
namespace {

[[noreturn]] void fail(const std::string& what, const std::filesystem::path& file, int error) {
    throw std::system_error(error, std::generic_category(), what + " " + file.string());
}

/// What an interrupted call left undone is done.
template <typename Call>
auto untilDone(Call&& call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

}  // namespace

void writeDurably(const std::filesystem::path& file, std::string_view text) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0600);
    if (descriptor < 0) fail("Can't create", file, errno);
    bool good = true;
    while (good && !text.empty()) {
        const ssize_t written = untilDone([&] { return ::write(descriptor, text.data(), text.size()); });
        good = written > 0;
        if (good) text.remove_prefix(static_cast<std::size_t>(written));
    }
    good = good && untilDone([&] { return ::fsync(descriptor); }) == 0;
    const int error = errno;
    ::close(descriptor);
    if (good) return;
    ::unlink(file.c_str());
    fail("Can't write", file, error);
}

void takePlace(const std::filesystem::path& file, const std::filesystem::path& target,
               std::error_code& error) {
    std::filesystem::rename(file, target, error);
}

}  // namespace vantrel::platform
