// The program as a session sees it.
#pragma once

#include <string>
#include <vector>

#include "app/popup_messages.h"

namespace vantrel::headless {

class OperatedProgram {
  public:
    virtual ~OperatedProgram() = default;

    /// The start-up; returns when it is through.
    virtual void start() = 0;
    /// Closes the main window as the operator would; the shutdown goes on in the event loop.
    virtual void close() = 0;
    /// The shutdown is through.
    virtual bool ended() const = 0;
    /// The start-up waits for the operator's answer in one of the program's own windows.
    virtual bool asksDuringStart() const = 0;

    /// Every entry of the log so far: time, three blanks, text.
    virtual const std::vector<std::string>& logLines() const = 0;
    virtual const std::vector<app::PopupMessages::Shown>& popups() const = 0;
};

}  // namespace vantrel::headless
