// The event loop of the headless front and of the tests.
//
// It owns a queue of handlers and timers; what time is and how it passes is the TimeKeeper's business: the
// virtual one jumps to the next thing due, so that a wait of a minute costs nothing, the real one waits.
// An attendant outside the program (a script, a test) can take part through attend(), which is called between
// handlers and before time passes, however deep the program's procedures are nested at that moment.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "platform/event_loop.h"

namespace vantrel::platform {

class TimeKeeper : public Clock {
  public:
    /// Lets time pass until the instant, or returns earlier when something outside wants attention.
    virtual void passUntil(Instant instant) = 0;

    /// The descriptors whose input is part of what is outside, from now on.
    virtual void watch(const std::vector<int>& /*descriptors*/) {}
    /// Those of them that have something to read now. Where time is virtual, nothing comes from outside.
    virtual std::vector<int> readable() { return {}; }
};

/// Time that stands still until a handler waits. A limit on the steps and on the time that may pass turns an
/// endless wait into an exception.
class VirtualTime : public TimeKeeper {
  public:
    explicit VirtualTime(Instant start, Milliseconds limit = std::chrono::hours{24 * 400},
                         std::int64_t stepLimit = 200'000'000);

    Instant utc() const override { return now_; }
    Milliseconds sinceStart() const override { return now_ - start_; }
    void passUntil(Instant instant) override;

  private:
    Instant start_;
    Instant now_;
    Milliseconds limit_;
    std::int64_t stepsLeft_;
};

class QueuedEventLoop : public EventLoop {
  public:
    explicit QueuedEventLoop(TimeKeeper& time) : time_(time) {}

    const Clock& clock() const override { return time_; }
    void post(std::function<void()> handler) override;
    TimerHandle every(Milliseconds interval, std::function<void()> handler) override;
    TimerHandle whenReadable(int descriptor, std::function<void()> handler) override;
    void yield() override;
    void sleep(Milliseconds duration) override;

    /// Runs the handler once, when `delay` has passed, unless the handle goes before.
    [[nodiscard]] TimerHandle after(Milliseconds delay, std::function<void()> handler);

    /// Runs handlers and lets time pass until `done` says so, or nothing is left to wait for.
    void runUntil(const std::function<bool()>& done);

    /// True while no handler is on the stack and none is queued.
    bool idle() const { return depth_ == 0 && queue_.empty(); }

    /// Who takes part between handlers and before time passes.
    void setAttendant(std::function<void()> attend) { attend_ = std::move(attend); }

    /// Who hears of exceptions that leave a handler; without one they end the program.
    void setOnFailure(std::function<void()> onFailure) { onFailure_ = std::move(onFailure); }

  private:
    struct Timer {
        Instant due;
        Milliseconds interval;  // zero: once
        std::int64_t order;
        std::weak_ptr<std::function<void()>> handler;
    };

    struct Watch {
        int descriptor;
        std::weak_ptr<std::function<void()>> handler;
    };

    TimerHandle startTimer(Milliseconds delay, Milliseconds interval, std::function<void()> handler);
    bool takeTurn();
    bool runNext();
    bool runDue();
    bool runReadable();
    void tellWatched();
    void attend();
    Instant nextDue(Instant latest);
    void dispatch(const std::function<void()>& handler);

    TimeKeeper& time_;
    std::deque<std::function<void()>> queue_;
    std::vector<Timer> timers_;
    std::vector<Watch> watches_;
    std::function<void()> attend_;
    std::function<void()> onFailure_;
    std::int64_t nextOrder_ = 0;
    int depth_ = 0;
};

}  // namespace vantrel::platform
