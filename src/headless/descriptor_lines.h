// Commands and replies over file descriptors: standard input and output.
#pragma once

#include <cstddef>
#include <string>

#include "headless/command_source.h"

namespace vantrel::headless {

class DescriptorCommands : public CommandSource {
  public:
    static constexpr std::size_t kLongestLine = 1 << 20;

    /// Does not own the descriptor.
    explicit DescriptorCommands(int descriptor, std::size_t longestLine = kLongestLine)
        : descriptor_(descriptor), longestLine_(longestLine) {}

    Incoming next(bool mayWait) override;

    int descriptor() const { return descriptor_; }

  private:
    bool readMore(bool mayWait);
    Incoming takeLine(std::size_t length);

    int descriptor_;
    std::size_t longestLine_;
    std::string buffer_;
    std::size_t searched_ = 0;  // no line end before this
    bool skipping_ = false;     // inside a line that is too long
    bool ended_ = false;
};

class DescriptorReplies : public ReplySink {
  public:
    explicit DescriptorReplies(int descriptor) : descriptor_(descriptor) {}
    bool send(const std::string& line) override;

  private:
    int descriptor_;
};

}  // namespace vantrel::headless
