#include "headless/descriptor_lines.h"

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace vantrel::headless {
namespace {

bool readable(int descriptor) {
    pollfd watched{descriptor, POLLIN, 0};
    return ::poll(&watched, 1, 0) > 0;
}

}  // namespace

Incoming DescriptorCommands::next(bool mayWait) {
    for (;;) {
        const auto end = buffer_.find('\n', searched_);
        if (end != std::string::npos) return takeLine(end);
        searched_ = buffer_.size();
        if (buffer_.size() > longestLine_) {
            skipping_ = true;
            buffer_.clear();
            searched_ = 0;
        }
        if (ended_) {
            if (buffer_.empty() && !skipping_) return {Incoming::Kind::kEnd, {}};
            buffer_ += '\n';  // the last line may lack its end
            continue;
        }
        if (!readMore(mayWait)) return {};
    }
}

Incoming DescriptorCommands::takeLine(std::size_t length) {
    std::string line = buffer_.substr(0, length);
    buffer_.erase(0, length + 1);
    searched_ = 0;
    if (std::exchange(skipping_, false) || line.size() > longestLine_) return {Incoming::Kind::kTooLong, {}};
    return {Incoming::Kind::kLine, std::move(line)};
}

/// False when nothing has come yet, or a signal asks for attention.
bool DescriptorCommands::readMore(bool mayWait) {
    if (!mayWait && !readable(descriptor_)) return false;
    std::array<char, 65536> chunk;
    const ssize_t got = ::read(descriptor_, chunk.data(), chunk.size());
    if (got > 0)
        buffer_.append(chunk.data(), static_cast<std::size_t>(got));
    else if (got < 0 && errno == EINTR)
        return false;
    else
        ended_ = true;
    return true;
}

bool DescriptorReplies::send(const std::string& line) {
    const std::string whole = line + "\n";
    std::string_view rest = whole;
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace vantrel::headless
