// The system's wish that the program end: a logout, a service manager, Ctrl+C at a terminal.
#pragma once

namespace vantrel::platform {

/// Turns the first SIGTERM, SIGINT or SIGHUP into a wish that somebody has to ask for; a second one ends the
/// program at once, as it does without this. One object at a time.
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
