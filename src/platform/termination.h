// The system's wish that the program end: a logout, a service manager, Ctrl+C at a terminal.
#pragma once

namespace vantrel::platform {

/// Turns SIGTERM, SIGINT and SIGHUP into a wish that the program has to ask for. Systems that shut down send
/// more than one; the closing goes on. Only SIGINT ends the program at once when the wish is there already:
/// the operator at a terminal has lost patience. One object at a time.
class TerminationWatch {
  public:
    TerminationWatch();
    ~TerminationWatch();
    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

    /// True from the first signal on.
    bool requested() const;
};

}  // namespace vantrel::platform
