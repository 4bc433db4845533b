// Work that takes too long for the thread that the window lives on: decoding a large picture.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/event_loop.h"

namespace vantrel::hosts {

/// Work under way. When the last of these goes, nobody hears of its end any more.
using BackgroundWork = std::shared_ptr<void>;

class Background {
  public:
    virtual ~Background() = default;

    /// Does `work`, which must not throw and owns whatever it touches, and then `done`, from the event loop.
    [[nodiscard]] virtual BackgroundWork run(std::function<void()> work, std::function<void()> done) = 0;
};

/// Does it in threads, one for each work.
class BackgroundThreads : public Background {
  public:
    explicit BackgroundThreads(platform::EventLoop& loop);
    /// Waits for the work under way.
    ~BackgroundThreads() override;

    BackgroundWork run(std::function<void()> work, std::function<void()> done) override;

  private:
    struct Task;

    void deliver();

    platform::EventLoop& loop_;
    std::vector<std::shared_ptr<Task>> tasks_;
    platform::TimerHandle timer_;  // while there are tasks
};

/// Does it in the loop itself: where time is virtual, and every run is to be the same.
class BackgroundOfLoop : public Background {
  public:
    explicit BackgroundOfLoop(platform::EventLoop& loop) : loop_(loop) {}

    BackgroundWork run(std::function<void()> work, std::function<void()> done) override;

  private:
    platform::EventLoop& loop_;
};

}  // namespace vantrel::hosts
