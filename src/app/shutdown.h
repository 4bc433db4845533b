// How the program ends.
#pragma once

#include <functional>

#include "app/parts.h"

namespace vantrel::app {

/// Closing only sets the flags that make every procedure return; what is left to do happens from a handler of
/// its own once none is on the stack any more.
class Shutdown {
  public:
    explicit Shutdown(Parts& parts) : parts_(parts) {}

    /// The operator wants the program to end. Returns at once; further wishes change nothing. Procedures that
    /// are cut off by it have nothing to tell him.
    void UnloadThisApplication();
    bool begun() const { return begun_; }

    /// All procedures have returned: true when this call ended the program. Never throws. Events may run
    /// meanwhile; a second call does nothing.
    bool finish();
    bool through() const { return through_; }

  private:
    void setSilent(bool silent);
    void saveEverything();
    void leaveImagingProgram();
    void disconnectTelescope();
    void UnloadAll();
    void AppQuit();

    Parts& parts_;
    bool begun_ = false;
    bool finishing_ = false;
    bool through_ = false;
};

}  // namespace vantrel::app
