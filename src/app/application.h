// The program without its windows' looks: builds the parts, wires them together, starts and ends them.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace vantrel::app {

class MessageLog;
class PopupMessages;

class Application {
  public:
    explicit Application(const platform::Machine& machine);
    ~Application();

    /// The start-up sequence: folders and log, settings into the fields, imaging program, telescope, site.
    /// Returns when it is through; ended() tells whether the program has to end at once.
    void start();

    /// The main window was closed or the start failed, and the shutdown is through.
    bool ended() const;

    /// True while the start-up or a procedure that a button started is running.
    bool busy() const;

    MessageLog& log();
    PopupMessages& popups();

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace vantrel::app
