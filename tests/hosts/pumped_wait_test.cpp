#include "hosts/pumped_wait.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"

namespace vantrel::hosts {
namespace {

using namespace std::chrono_literals;
using platform::Milliseconds;
using Outcome = PumpedWait::Outcome;

class PumpedWaitTest : public testing::Test {
  protected:
    Milliseconds now() const { return time_.sinceStart(); }
    std::function<bool()> after(Milliseconds instant) {
        return [this, instant] { return now() >= instant; };
    }
    /// Moves bytes every 5 ms.
    bool transport(Milliseconds atMost) {
        time_.passUntil(time_.utc() + std::min(atMost, Milliseconds{5}));
        return true;
    }
    Outcome wait(const std::function<bool()>& done, Milliseconds timeOut) {
        return wait_.until(done, timeOut, [this](Milliseconds atMost) { return transport(atMost); });
    }

    platform::VirtualTime time_{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop_{time_};
    platform::OutsideCalls calls_;
    bool givenUp_ = false;
    PumpedWait wait_{loop_, calls_, [this] { return givenUp_; }};
};

TEST_F(PumpedWaitTest, OtherHandlersRunInALongWaitOnlyAndCanTellIt) {
    std::vector<bool> underWay;
    loop_.post([&] { underWay.push_back(calls_.underWay()); });
    int over = 0;
    const auto listening = calls_.over.subscribe([&] { ++over; });
    EXPECT_EQ(wait(after(45ms), 3s), Outcome::kDone);
    EXPECT_EQ(now(), 45ms);
    EXPECT_TRUE(underWay.empty());
    EXPECT_EQ(wait(after(1s), 3s), Outcome::kDone);
    EXPECT_LE(now(), 1010ms);
    EXPECT_EQ(underWay, std::vector<bool>{true});
    EXPECT_EQ(over, 1);
    EXPECT_FALSE(calls_.underWay());
}

TEST_F(PumpedWaitTest, EndsInTimeHoweverItEnds) {
    const struct {
        const char* why;
        Milliseconds timeOut;
        std::function<void()> what;
        Outcome outcome;
        Milliseconds latest;
    } cases[] = {
        {"time-out", 700ms, [] {}, Outcome::kTimedOut, 700ms},
        {"a time-out shorter than the first phase", 20ms, [] {}, Outcome::kTimedOut, 20ms},
        {"stop", 10s, [&] { givenUp_ = true; }, Outcome::kGivenUp, 60ms},
        {"closing", 10s, [&] { loop_.setEnding(true); }, Outcome::kGivenUp, 60ms},
    };
    for (const auto& [why, timeOut, what, outcome, latest] : cases) {
        const Milliseconds start = now();
        loop_.post(what);
        EXPECT_EQ(wait([] { return false; }, timeOut), outcome) << why;
        EXPECT_LE(now() - start, latest) << why;
        loop_.yield();
        givenUp_ = false;
        loop_.setEnding(false);
    }
}

TEST_F(PumpedWaitTest, WhatFollowsAStopIsWaitedFor) {
    givenUp_ = true;
    EXPECT_EQ(wait(after(1s), 3s), Outcome::kDone);
    EXPECT_EQ(wait([] { return false; }, 3s), Outcome::kTimedOut);
}

TEST_F(PumpedWaitTest, WithoutATransportHandlersRunFromTheStart) {
    bool answered = false;
    loop_.post([&] { answered = true; });
    EXPECT_EQ(wait_.until([&] { return answered; }, 3s), Outcome::kDone);
    EXPECT_EQ(now(), 10ms);
    EXPECT_EQ(wait_.until([&] { return now() >= 30ms; }, 3s, [](Milliseconds) { return false; }),
              Outcome::kDone);
}

TEST_F(PumpedWaitTest, WhatIsThrownEndsTheWaitAndTheCall) {
    EXPECT_THROW(wait(
                     [&]() -> bool {
                         if (now() > 200ms) throw std::runtime_error("refused");
                         return false;
                     },
                     3s),
                 std::runtime_error);
    EXPECT_FALSE(calls_.underWay());
}

TEST_F(PumpedWaitTest, AWaitInsideAWaitEndsFirstAndTheCallIsOverWithTheOuterOne) {
    std::vector<std::string> story;
    const auto listening = calls_.over.subscribe([&] { story.push_back("over"); });
    loop_.post([&] {
        wait(after(2s), 5s);
        story.push_back("inner");
    });
    EXPECT_EQ(wait([] { return false; }, 1s), Outcome::kTimedOut);
    story.push_back("outer");
    EXPECT_EQ(story, (std::vector<std::string>{"inner", "over", "outer"}));
}

}  // namespace
}  // namespace vantrel::hosts
