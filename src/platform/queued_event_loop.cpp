#include "platform/queued_event_loop.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace vantrel::platform {

VirtualTime::VirtualTime(Instant start, Milliseconds limit, std::int64_t stepLimit)
    : start_(start), now_(start), limit_(limit), stepsLeft_(stepLimit) {}

void VirtualTime::passUntil(Instant instant) {
    if (--stepsLeft_ < 0 || instant - start_ > limit_)
        throw std::runtime_error("The virtual clock reached its limit: something waits for ever");
    now_ = std::max(now_, instant);
}

void QueuedEventLoop::post(std::function<void()> handler) { queue_.push_back(std::move(handler)); }

TimerHandle QueuedEventLoop::every(Milliseconds interval, std::function<void()> handler) {
    return startTimer(interval, interval, std::move(handler));
}

TimerHandle QueuedEventLoop::after(Milliseconds delay, std::function<void()> handler) {
    return startTimer(delay, Milliseconds{0}, std::move(handler));
}

TimerHandle QueuedEventLoop::whenReadable(int descriptor, std::function<void()> handler) {
    auto held = std::make_shared<std::function<void()>>(std::move(handler));
    watches_.push_back({descriptor, held});
    tellWatched();
    return held;
}

TimerHandle QueuedEventLoop::startTimer(Milliseconds delay, Milliseconds interval,
                                        std::function<void()> handler) {
    auto held = std::make_shared<std::function<void()>>(std::move(handler));
    timers_.push_back({time_.utc() + delay, interval, nextOrder_++, held});
    return held;
}

void QueuedEventLoop::yield() { takeTurn(); }

/// Runs what is due, before and after the attendant's part. True when nothing ran after the attendant: he has
/// seen everything that happened at this instant, so time may pass.
bool QueuedEventLoop::takeTurn() {
    runDue();
    attend();
    return !runDue();
}

void QueuedEventLoop::sleep(Milliseconds duration) {
    const Instant end = time_.utc() + duration;
    for (;;) {
        const bool timeMayPass = takeTurn();
        if (time_.utc() >= end) return;
        time_.passUntil(timeMayPass ? nextDue(end) : time_.utc());
    }
}

void QueuedEventLoop::runUntil(const std::function<bool()>& done) {
    constexpr Milliseconds kFarAway = std::chrono::hours{24};
    for (;;) {
        const bool timeMayPass = takeTurn();
        if (done()) return;
        time_.passUntil(timeMayPass ? nextDue(time_.utc() + kFarAway) : time_.utc());
    }
}

/// Runs the queued handler or due timer that comes first; false when there is none.
bool QueuedEventLoop::runNext() {
    if (!queue_.empty()) {
        const auto handler = std::move(queue_.front());
        queue_.pop_front();
        dispatch(handler);
        return true;
    }
    std::erase_if(timers_, [](const Timer& timer) { return timer.handler.expired(); });
    const auto first = std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
        return a.due != b.due ? a.due < b.due : a.order < b.order;
    });
    if (first == timers_.end() || first->due > time_.utc()) return false;
    const auto handler = first->handler.lock();
    if (first->interval.count() == 0)
        timers_.erase(first);
    else
        first->due = std::max(first->due + first->interval, time_.utc());
    dispatch(*handler);
    return true;
}

/// True when a handler ran.
bool QueuedEventLoop::runDue() {
    // What is queued or falls due while this runs waits for the next turn, so that a handler that posts
    // itself can't keep a yield from returning.
    bool ran = runReadable();
    for (std::size_t turns = queue_.size() + timers_.size(); turns > 0 && runNext(); --turns) ran = true;
    return ran;
}

/// True when a handler ran.
bool QueuedEventLoop::runReadable() {
    if (watches_.empty()) return false;
    tellWatched();
    bool ran = false;
    for (const int descriptor : time_.readable()) {
        // Handlers come and go while others run.
        const auto found = std::find_if(watches_.begin(), watches_.end(), [&](const Watch& watch) {
            return watch.descriptor == descriptor && !watch.handler.expired();
        });
        if (found == watches_.end()) continue;
        const auto handler = found->handler.lock();
        dispatch(*handler);
        ran = true;
    }
    tellWatched();
    return ran;
}

/// A descriptor whose handle has gone may be closed, and another's by now.
void QueuedEventLoop::tellWatched() {
    std::erase_if(watches_, [](const Watch& watch) { return watch.handler.expired(); });
    std::vector<int> descriptors;
    descriptors.reserve(watches_.size());
    for (const Watch& watch : watches_) descriptors.push_back(watch.descriptor);
    time_.watch(descriptors);
}

void QueuedEventLoop::attend() {
    if (attend_) attend_();
}

Instant QueuedEventLoop::nextDue(Instant latest) {
    if (!queue_.empty()) return time_.utc();
    for (const Timer& timer : timers_)
        if (!timer.handler.expired()) latest = std::min(latest, timer.due);
    return latest;
}

void QueuedEventLoop::dispatch(const std::function<void()>& handler) {
    struct Depth {
        int& depth;
        explicit Depth(int& d) : depth(d) { ++depth; }
        ~Depth() { --depth; }
    } const guard(depth_);
    try {
        handler();
    } catch (...) {
        if (!onFailure_) throw;
        onFailure_();
    }
}

}  // namespace vantrel::platform
