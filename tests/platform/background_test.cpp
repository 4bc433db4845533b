#include "platform/background.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "platform/queued_event_loop.h"

namespace vantrel::platform {
namespace {

using namespace std::chrono_literals;

struct BackgroundTest : testing::Test {
    void runUntil(const std::function<bool()>& done) {
        const auto start = loop.clock().sinceStart();
        loop.runUntil([&] { return done() || loop.clock().sinceStart() - start > 20s; });
    }

    headless::SystemTime time{headless::SystemTime::now(), [] { return -1; }};
    QueuedEventLoop loop{time};
    OutsideCalls calls;
    std::unique_ptr<BackgroundThreads> background = std::make_unique<BackgroundThreads>(loop, calls);
};

TEST_F(BackgroundTest, WorksElsewhereAndTellsHere) {
    std::thread::id worker;
    std::thread::id listener;
    BackgroundWork next;
    const BackgroundWork work =
        background->run([] {},
                        [&] {
                            next = background->run([&] { worker = std::this_thread::get_id(); },
                                                   [&] { listener = std::this_thread::get_id(); });
                        });
    EXPECT_EQ(listener, std::thread::id());
    runUntil([&] { return listener != std::thread::id(); });
    EXPECT_EQ(listener, std::this_thread::get_id());
    EXPECT_NE(worker, listener);
}

TEST_F(BackgroundTest, SaysNothingToWhoeverLetGo) {
    std::atomic<bool> worked = false;
    bool heard = false;
    bool otherHeard = false;
    {
        const BackgroundWork work = background->run([&] { worked = true; }, [&] { heard = true; });
    }
    const BackgroundWork other = background->run(
        [&] {
            while (!worked) std::this_thread::yield();
        },
        [&] { otherHeard = true; });
    runUntil([&] { return otherHeard; });
    EXPECT_TRUE(worked);
    EXPECT_FALSE(heard);
}

TEST_F(BackgroundTest, EndsWithItsWork) {
    std::atomic<bool> may = false;
    std::atomic<bool> worked = false;
    const BackgroundWork work = background->run(
        [&] {
            while (!may) std::this_thread::yield();
            worked = true;
        },
        [] {});
    may = true;
    background.reset();
    EXPECT_TRUE(worked);
}

TEST_F(BackgroundTest, LetsHandlersInWhileItAwaitsLongWork) {
    std::atomic<bool> may = false;
    std::thread::id worker;
    bool underWay = false;
    loop.post([&] {
        underWay = calls.underWay();
        loop.setEnding(true);  // which cuts no work off
        may = true;
    });
    background->await([&] {
        worker = std::this_thread::get_id();
        while (!may) std::this_thread::yield();
    });
    EXPECT_NE(worker, std::this_thread::get_id());
    EXPECT_TRUE(underWay);
    EXPECT_FALSE(calls.underWay());
    EXPECT_THROW(background->await([] { throw std::invalid_argument("no"); }), std::invalid_argument);
}

// Where every run is to be the same, work comes in its turn.
TEST_F(BackgroundTest, OfTheLoopWorksInItsTurnUnlessLetGo) {
    BackgroundOfLoop inTurn(loop);
    std::string story;
    const BackgroundWork kept = inTurn.run([&] { story += "work "; }, [&] { story += "done "; });
    inTurn.await([&] { story += "at once "; });
    BackgroundWork dropped = inTurn.run([&] { story += "never "; }, [] {});
    BackgroundWork inside = inTurn.run([&] { inside.reset(); }, [&] { story += "never "; });
    dropped.reset();
    EXPECT_EQ(story, "at once ");
    loop.yield();
    EXPECT_EQ(story, "at once work done ");
}

}  // namespace
}  // namespace vantrel::platform
