// Work that takes too long for the thread that the window lives on: decoding a large picture, finding its
// stars.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/event_loop.h"
#include "platform/outside_call.h"

namespace vantrel::platform {

/// Work under way. When the last of these goes, nobody hears of its end any more.
using BackgroundWork = std::shared_ptr<void>;

class Background {
  public:
    virtual ~Background() = default;

    /// Does `work`, which must not throw and owns whatever it touches, and then `done`, from the event loop.
    [[nodiscard]] virtual BackgroundWork run(std::function<void()> work, std::function<void()> done) = 0;

    /// Does `work` before it returns, and throws what that threw. Work that takes its time is waited for as a
    /// member of an outside program is: other handlers run meanwhile, and nothing that they do may touch what
    /// `work` touches.
    virtual void await(const std::function<void()>& work) = 0;
};

/// Does it in threads, one for each work.
class BackgroundThreads : public Background {
  public:
    /// Who waits for work of these threads is entered in `calls`.
    BackgroundThreads(EventLoop& loop, OutsideCalls& calls) : loop_(loop), calls_(calls) {}
    /// Waits for the work under way.
    ~BackgroundThreads() override;

    BackgroundWork run(std::function<void()> work, std::function<void()> done) override;
    void await(const std::function<void()>& work) override;

  private:
    struct Task;

    void deliver();

    EventLoop& loop_;
    OutsideCalls& calls_;
    std::vector<std::shared_ptr<Task>> tasks_;
    TimerHandle timer_;  // while there are tasks
};

/// Does it in the loop itself: where time is virtual, and every run is to be the same.
class BackgroundOfLoop : public Background {
  public:
    explicit BackgroundOfLoop(EventLoop& loop) : loop_(loop) {}

    BackgroundWork run(std::function<void()> work, std::function<void()> done) override;
    void await(const std::function<void()>& work) override { work(); }

  private:
    EventLoop& loop_;
};

}  // namespace vantrel::platform
