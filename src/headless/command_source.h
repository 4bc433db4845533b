// Where the operator's commands come from and where the replies go: lines of text.
#pragma once

#include <optional>
#include <string>

namespace vantrel::headless {

/// One step of reading commands.
struct Incoming {
    enum class Kind { kNothingYet, kLine, kTooLong, kEnd };
    Kind kind = Kind::kNothingYet;
    std::string line;
};

class CommandSource {
  public:
    virtual ~CommandSource() = default;

    /// The next line. With `mayWait` it blocks until there is one or the input has ended. A line beyond the
    /// source's limit arrives as kTooLong, without its text.
    virtual Incoming next(bool mayWait) = 0;
};

class ReplySink {
  public:
    virtual ~ReplySink() = default;
    /// Sends one line (without its end); false when nobody listens any more.
    virtual bool send(const std::string& line) = 0;
};

}  // namespace vantrel::headless
