// The program without its windows' looks: builds the parts, wires them together, starts and ends them.
//
// A front prepares a Machine, asks mayStart (app/startup.h), constructs the application, calls start() and
// runs its event loop until ended(). The operator closes the main window with Form::closeByOperator, or a
// front asks for the end with close().
#pragma once

#include <memory>

#include "platform/machine.h"
#include "platform/picture_facts.h"
#include "platform/signal.h"

namespace vantrel::correction {
class StarGuide;
}

namespace vantrel::app {

class MessageLog;
class PopupMessages;

class Application {
  public:
    explicit Application(const platform::Machine& machine);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// The start-up sequence: folders and log, settings into the fields, imaging program, telescope, site.
    /// Returns when it is through and the main window is shown, or when the program has to end at once.
    void start();

    /// Ends the program as closing the main window does: the procedures return, then everything is stored
    /// and released. Returns at once; the rest happens in the event loop.
    void close();

    /// The main window was closed or the start failed, and the shutdown is through.
    bool ended() const;
    platform::Signal<> endedChanged;

    /// The program ended because its settings couldn't be read or stored, or because it could not start.
    bool failed() const;

    /// True while the start-up or a procedure that the operator started is running.
    bool busy() const;

    /// The operator asked for a stop or the end: nothing that takes long is worth waiting for.
    bool stopping() const;

    /// What is known of a picture whose exposure begins now. Asks the mount where it points.
    platform::PictureFacts pictureFacts();

    /// Inside a catch block: logs the failure that left a handler. For the event loops' last barrier.
    void reportFailure(const std::string& handler);

    /// How far the correction star is from its mark.
    correction::StarGuide& starGuide();

    MessageLog& log();
    PopupMessages& popups();

  private:
    struct Wiring;
    std::unique_ptr<Wiring> wiring_;
};

}  // namespace vantrel::app
