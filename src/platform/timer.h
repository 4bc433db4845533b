// A form's timer: ticks every interval while it is enabled.
#pragma once

#include <functional>

#include "platform/event_loop.h"

namespace vantrel::platform {

class Timer {
  public:
    Timer(EventLoop& loop, Milliseconds interval) : loop_(loop), interval_(interval) {}

    bool enabled() const { return handle_ != nullptr; }
    void setEnabled(bool enabled) {
        if (!enabled)
            handle_.reset();
        else if (!handle_)
            handle_ = loop_.every(interval_, [this] {
                if (onTick) onTick();
            });
    }

    std::function<void()> onTick;

  private:
    EventLoop& loop_;
    Milliseconds interval_;
    TimerHandle handle_;
};

}  // namespace vantrel::platform
