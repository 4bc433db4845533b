#include <atomic>

#include "platform/termination.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

// The system calls the handler in a thread of its own.
std::atomic<bool> requestedBySystem = false;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

BOOL WINAPI handle(DWORD event) {
    const bool before = requestedBySystem.exchange(true);
    return event == CTRL_C_EVENT && before ? FALSE : TRUE;
}

}  // namespace

TerminationWatch::TerminationWatch() {
    requestedBySystem = false;
    ::SetConsoleCtrlHandler(&handle, TRUE);
}

TerminationWatch::~TerminationWatch() { ::SetConsoleCtrlHandler(&handle, FALSE); }

bool TerminationWatch::requested() const { return requestedBySystem; }

}  // namespace vantrel::platform
