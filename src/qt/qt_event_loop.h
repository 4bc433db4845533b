// The event loop of the program with windows: the toolkit's own, waited on in one place.
#pragma once

#include <QElapsedTimer>
#include <QObject>

#include "platform/event_loop.h"
#include "qt/barrier.h"

namespace vantrel::qt {

/// Waits nest: a handler that runs inside a wait may wait itself, and the inner wait ends first. A wait
/// blocks until there is something to do, also after the toolkit was told to quit.
class QtEventLoop : public platform::EventLoop {
  public:
    explicit QtEventLoop(const Barrier& barrier);
    ~QtEventLoop() override;

    const platform::Clock& clock() const override { return clock_; }
    void post(std::function<void()> handler) override;
    [[nodiscard]] platform::TimerHandle every(platform::Milliseconds interval,
                                              std::function<void()> handler) override;
    [[nodiscard]] platform::TimerHandle whenReadable(int descriptor, std::function<void()> handler) override;
    void yield() override;
    void sleep(platform::Milliseconds duration) override;

    /// Runs handlers until `done` holds, which is asked after each turn of the toolkit's loop.
    void runUntil(const std::function<bool()>& done);

  private:
    class RunningClock : public platform::Clock {
      public:
        RunningClock() { running_.start(); }
        platform::Instant utc() const override;
        platform::Milliseconds sinceStart() const override {
            return platform::Milliseconds{running_.elapsed()};
        }

      private:
        QElapsedTimer running_;
    };

    const Barrier& barrier_;
    RunningClock clock_;
    QObject receiver_;  // posted handlers go with it
};

}  // namespace vantrel::qt
