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

TEST_F(EventLoopTest, TimersTickInTheOrderTheyAreDueAndGoWithTheirHandle) {
    const TimerHandle slow = loop.every(200ms, [&] { tell("slow"); });
    TimerHandle fast = loop.every(100ms, [&] { tell("fast"); });
    const TimerHandle once = loop.after(60ms, [&] { tell("once"); });
    loop.sleep(200ms);
    fast.reset();
    loop.sleep(200ms);
    EXPECT_EQ(story, (Story{"60 once", "100 fast", "200 slow", "200 fast", "400 slow"}));
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

TEST_F(EventLoopTest, YieldRunsWhatIsQueuedAndLetsNoTimePass) {
    std::function<void()> again = [&] {
        tell("again");
        loop.post(again);
    };
    loop.post(again);
    loop.post([&] { tell("second"); });
    loop.yield();
    ASSERT_GE(story.size(), 2U);
    EXPECT_EQ(story[1], "0 second");
    EXPECT_LE(story.size(), 3U) << "a handler that posts itself holds nobody";
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

TEST(VirtualTime, TurnsAnEndlessWaitIntoAnException) {
    VirtualTime brief(Instant{}, 1min, 100);
    QueuedEventLoop loop(brief);
    EXPECT_THROW(loop.sleep(2min), std::runtime_error);
    EXPECT_THROW(loop.runUntil([] { return false; }), std::runtime_error);
}

TEST(Clock, ReadsInstants) {
    const std::pair<const char*, bool> cases[] = {
        {"2026-11-24T20:00:00.5", true}, {"2024-02-29T00:00:00Z", true},
        {"2026-02-29T00:00:00Z", false}, {"2026-11-24 20:00:00", false},
        {"2026-11-24T24:00:00Z", false}, {"2026-11-24T20:00:00+01", false},
        {"2026-11-24T20:60:00Z", false}, {"", false},
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
