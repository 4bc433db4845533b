// What a script waits for.
#pragma once

#include <functional>
#include <string>

#include "headless/json_values.h"
#include "headless/operated_program.h"
#include "platform/form.h"

namespace vantrel::headless {

/// The part of the log that a script hasn't waited for yet.
class LogCursor {
  public:
    explicit LogCursor(const OperatedProgram& program) : program_(program) {}

    /// True when a line after the last match contains the text; that line is then the last match.
    bool find(const std::string& text);

  private:
    const OperatedProgram& program_;
    std::size_t next_ = 0;
};

/// Asked again and again until it holds.
using WaitCondition = std::function<bool()>;

/// From {"control", "property", "is"}, {"log"}, {"idle": true} or {"window"}; throws CommandError when a name
/// in it is unknown or it is none of these. `idle` tells whether no procedure is running.
WaitCondition waitCondition(const Json& json, const platform::Screen& screen, LogCursor& log,
                            std::function<bool()> idle);

}  // namespace vantrel::headless
