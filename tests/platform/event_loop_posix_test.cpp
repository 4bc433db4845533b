#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"
#include "support/time_zone.h"

namespace vantrel::platform {
namespace {

using namespace std::chrono_literals;

struct EventLoopTest : testing::Test {
    VirtualTime time{parseInstant("2026-11-24T20:00:00Z").value()};
    QueuedEventLoop loop{time};
    std::vector<std::string> story;

    void tell(const std::string& what) {
        story.push_back(std::to_string(time.sinceStart().count()) + " " + what);
    }
};

using Story = std::vector<std::string>;

TEST_F(EventLoopTest, AWaitInsideAWaitEndsFirst) {
    loop.post([&] {
        tell("inner begins");
        loop.sleep(550ms);
        tell("inner ends");
    });
    loop.sleep(100ms);
    tell("outer ends");
    EXPECT_EQ(story, (Story{"0 inner begins", "550 inner ends", "550 outer ends"}));
}

TEST_F(EventLoopTest, TimersTickInTheOrderTheyAreDue) {
    const TimerHandle slow = loop.every(200ms, [&] { tell("slow"); });
    TimerHandle fast = loop.every(100ms, [&] { tell("fast"); });
    loop.sleep(200ms);
    fast.reset();
    loop.sleep(200ms);
    EXPECT_EQ(story, (Story{"100 fast", "200 slow", "200 fast", "400 slow"}));
}

TEST_F(EventLoopTest, ATimerTicksInsideItsOwnWaitingHandler) {
    const TimerHandle timer = loop.every(100ms, [&] {
        tell("tick");
        if (story.size() == 1) loop.sleep(250ms);
        tell("tock");
    });
    loop.sleep(100ms);
    EXPECT_EQ(story, (Story{"100 tick", "200 tick", "200 tock", "300 tick", "300 tock", "350 tock"}));
}

TEST_F(EventLoopTest, OneShotTimersGoWithTheirHandle) {
    TimerHandle dropped = loop.after(50ms, [&] { tell("dropped"); });
    const TimerHandle kept = loop.after(60ms, [&] { tell("kept"); });
    dropped.reset();
    loop.sleep(1s);
    EXPECT_EQ(story, Story{"60 kept"});
}

TEST_F(EventLoopTest, YieldRunsWhatIsQueuedAndLetsNoTimePass) {
    loop.post([&] {
        tell("first");
        loop.post([&] { tell("posted meanwhile"); });
    });
    loop.post([&] { tell("second"); });
    loop.yield();
    loop.yield();
    EXPECT_EQ(story, (Story{"0 first", "0 second", "0 posted meanwhile"}));
}

TEST_F(EventLoopTest, AHandlerThatPostsItselfDoesNotHoldAYield) {
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        loop.post(again);
    };
    loop.post(again);
    loop.yield();
    EXPECT_GE(runs, 1);
    EXPECT_LE(runs, 2);
}

TEST_F(EventLoopTest, TheAttendantSeesWhatHisDoingsLedToBeforeTimePasses) {
    int visits = 0;
    loop.setAttendant([&] {
        if (++visits == 1) loop.post([&] { tell("done at once"); });
        if (visits == 2) tell("seen");
    });
    loop.sleep(10s);
    EXPECT_EQ(story, (Story{"0 done at once", "0 seen"}));
}

TEST_F(EventLoopTest, IdleMeansNoHandlerAnywhere) {
    EXPECT_TRUE(loop.idle());
    loop.post([&] {
        EXPECT_FALSE(loop.idle());
        loop.sleep(1s);
    });
    EXPECT_FALSE(loop.idle());
    loop.setAttendant([&] { tell(loop.idle() ? "idle" : "busy"); });
    loop.yield();
    EXPECT_EQ(story, (Story{"0 busy", "1000 busy", "1000 idle"}));
}

TEST_F(EventLoopTest, AHandlersExceptionIsReportedAndTheNextOneRuns) {
    loop.setOnFailure([&] { tell("failed"); });
    loop.post([] { throw std::runtime_error("oops"); });
    loop.post([&] { tell("next"); });
    loop.yield();
    EXPECT_EQ(story, (Story{"0 failed", "0 next"}));
    EXPECT_TRUE(loop.idle());
}

TEST_F(EventLoopTest, RunUntilStopsAsSoonAsItIsDone) {
    const TimerHandle timer = loop.every(1s, [&] { tell("tick"); });
    loop.runUntil([&] { return story.size() == 3; });
    EXPECT_EQ(time.sinceStart(), 3s);
}

TEST(VirtualTime, TurnsAnEndlessWaitIntoAnException) {
    VirtualTime brief(Instant{}, 1min, 100);
    QueuedEventLoop loop(brief);
    EXPECT_THROW(loop.sleep(2min), std::runtime_error);
    EXPECT_THROW(loop.runUntil([] { return false; }), std::runtime_error);
}

TEST(Clock, ReadsInstants) {
    const std::pair<const char*, bool> cases[] = {
        {"2026-11-24T20:00:00Z", true},    {"2026-11-24T20:00:00.5", true}, {"2024-02-29T00:00:00Z", true},
        {"2026-02-29T00:00:00Z", false},   {"2026-11-24 20:00:00", false},  {"2026-11-24T24:00:00Z", false},
        {"2026-11-24T20:00:00+01", false}, {"2026-11-24T20:60:00Z", false}, {"", false},
    };
    for (const auto& [text, good] : cases) EXPECT_EQ(parseInstant(text).has_value(), good) << text;
    const Instant instant = parseInstant("2026-11-24T20:03:04.250Z").value();
    EXPECT_EQ(formatTime(civilUtc(instant), "yyyyMMdd_HHmmss HH:mm"), "20261124_200304 20:03");
    EXPECT_EQ(civilUtc(instant).millisecond, 250);
    EXPECT_EQ(instant.time_since_epoch(), 1795550584250ms);
}

/// In a zone whose clock counts leap seconds, 27 of them since 1972.
TEST(Clock, UniversalTimeDoesntDependOnTheZone) {
    for (const char* zone : {"UTC", "Pacific/Auckland", "right/UTC"}) {
        const test::TimeZone here(zone);
        for (const char* text :
             {"2026-11-24T20:03:04.250Z", "1969-12-31T23:59:59.999Z", "2000-02-29T00:00:00Z"}) {
            const CivilTime time = civilUtc(parseInstant(text).value());
            EXPECT_EQ(formatTime(time, "yyyy-MM-ddTHH:mm:ss"), std::string(text).substr(0, 19)) << zone;
        }
    }
}

}  // namespace
}  // namespace vantrel::platform
