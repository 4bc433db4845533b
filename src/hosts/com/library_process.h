// A 32-bit server in a .dll can't be loaded by a 64-bit program. A small 32-bit one, vantrel-com32, makes its
// object and lets this program use it as one of a server that is a program.
#pragma once

#include <string>

#include "platform/win32_calls.h"

namespace vantrel::hosts::com {

/// The process that one object lives in.
class LibraryProcess {
  public:
    /// Starts the program, which stands beside this one. Throws std::system_error when it can't be started.
    explicit LibraryProcess(const std::string& progId);

    /// The object, or why there is none. Waits for as long as the server takes. To be called once, in the
    /// apartment that will use the object, which must be let go of before this.
    HRESULT takeObject(IDispatch*& object);

  private:
    std::string firstLine();

    platform::Handle input_;   // the process ends with it
    platform::Handle output_;  // tells of the object
};

}  // namespace vantrel::hosts::com
