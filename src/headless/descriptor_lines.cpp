#include "headless/descriptor_lines.h"

#include <array>
#include <utility>

#include "platform/descriptors.h"

namespace vantrel::headless {

using namespace platform;

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
    if (!mayWait && waitForInput({descriptor_}, Milliseconds{0}).empty()) return false;
    std::array<char, 65536> chunk;
    const auto [kind, bytes] = readFrom(descriptor_, chunk);
    if (kind == Received::Kind::kInterrupted) return false;
    if (kind == Received::Kind::kBytes) buffer_.append(chunk.data(), bytes);
    ended_ = kind == Received::Kind::kEnd;
    return true;
}

bool DescriptorReplies::send(const std::string& line) { return writeWhole(descriptor_, line + "\n"); }

}  // namespace vantrel::headless
