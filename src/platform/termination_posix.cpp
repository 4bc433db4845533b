#include <csignal>

#include "platform/termination.h"

namespace vantrel::platform {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

// A signal handler can reach nothing else.
volatile std::sig_atomic_t requestedBySignal =
    0;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

void restoreUsual(int signal) { std::signal(signal, SIG_DFL); }

}  // namespace

TerminationWatch::TerminationWatch() {
    requestedBySignal = 0;
    struct sigaction action {};
    action.sa_handler = [](int) {
        requestedBySignal = 1;
        restoreUsual(SIGINT);
    };
    // Without SA_RESTART: who waits for input wakes up.
    for (const int signal : kSignals) ::sigaction(signal, &action, nullptr);
}

TerminationWatch::~TerminationWatch() {
    for (const int signal : kSignals) restoreUsual(signal);
}

bool TerminationWatch::requested() const { return requestedBySignal != 0; }

}  // namespace vantrel::platform
