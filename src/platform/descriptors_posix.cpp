#include <cerrno>

#include <poll.h>
#include <unistd.h>

#include "platform/descriptors.h"

namespace vantrel::platform {

std::vector<int> waitForInput(const std::vector<int>& descriptors, Milliseconds longest) {
    std::vector<pollfd> watched;
    watched.reserve(descriptors.size());
    for (const int descriptor : descriptors) watched.push_back({descriptor, POLLIN, 0});
    const int ready = ::poll(watched.data(), watched.size(), static_cast<int>(longest.count()));
    std::vector<int> found;
    for (const pollfd& one : watched)
        if (ready > 0 && one.revents != 0) found.push_back(one.fd);
    return found;
}

Received readFrom(int descriptor, std::span<char> out) {
    const ssize_t got = ::read(descriptor, out.data(), out.size());
    if (got > 0) return {Received::Kind::kBytes, static_cast<std::size_t>(got)};
    return {got < 0 && errno == EINTR ? Received::Kind::kInterrupted : Received::Kind::kEnd};
}

bool writeWhole(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace vantrel::platform
