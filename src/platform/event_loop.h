// The one thread that everything the operator sees runs on.
//
// A procedure that has to wait calls yield (run what is due) or sleep (let time pass; what falls due
// meanwhile runs). Handlers that run inside such a wait may wait themselves: the inner wait ends first. A
// handler is never alone on the stack; disabling a control is what keeps it from being entered again.
#pragma once

#include <functional>
#include <memory>

#include "platform/clock.h"

namespace vantrel::platform {

/// Stops its timer, or its watch of a descriptor, when it goes.
using TimerHandle = std::shared_ptr<void>;

class EventLoop {
  public:
    virtual ~EventLoop() = default;

    virtual const Clock& clock() const = 0;

    /// Runs the handler from the next yield or sleep.
    virtual void post(std::function<void()> handler) = 0;

    /// Runs the handler every `interval` for as long as the handle lives.
    [[nodiscard]] virtual TimerHandle every(Milliseconds interval, std::function<void()> handler) = 0;

    /// Runs the handler whenever the descriptor of a socket or pipe has something to read, or its other end
    /// was closed, for as long as the handle lives. The handle has to go before the descriptor is closed.
    [[nodiscard]] virtual TimerHandle whenReadable(int descriptor, std::function<void()> handler) = 0;

    /// Runs what is due now and returns.
    virtual void yield() = 0;

    /// Returns when `duration` has passed. Handlers that fall due in the meantime run.
    virtual void sleep(Milliseconds duration) = 0;

    /// The program is ending: no wait is worth its time any more. Loops that let real time pass cut
    /// sleeps short, and a procedure that waits in several steps leaves after the one at hand.
    bool ending() const { return ending_; }
    void setEnding(bool ending) { ending_ = ending; }

  private:
    bool ending_ = false;
};

}  // namespace vantrel::platform
