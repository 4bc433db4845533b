#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qt/qt_event_loop.h"
#include "support/pipe.h"

namespace vantrel::qt {
namespace {

using platform::Milliseconds;

class QtEventLoopTest : public testing::Test {
  protected:
    std::vector<std::string> failures;
    Barrier barrier{[this](const std::string& text) { failures.push_back(text); }};
    QtEventLoop loop{barrier};
};

TEST_F(QtEventLoopTest, RunsPostedHandlersInOrderAndNotBefore) {
    std::string order;
    loop.post([&] { order += "a"; });
    loop.post([&] { order += "b"; });
    EXPECT_EQ(order, "");
    loop.yield();
    EXPECT_EQ(order, "ab");
}

// The toolkit sends what was posted in batches, and a wait may begin in the middle of one.
TEST_F(QtEventLoopTest, AWaitRunsWhatWasPostedBeforeItBegan) {
    for (const bool sleeps : {false, true}) {
        std::string order;
        loop.post([&] {
            order += "[";
            sleeps ? loop.sleep(Milliseconds{1}) : loop.yield();
            order += "]";
        });
        loop.post([&] { order += "."; });
        loop.yield();
        EXPECT_EQ(order, "[.]") << (sleeps ? "sleep" : "yield");
    }
}

TEST_F(QtEventLoopTest, ATimerTicksUntilItsHandleGoesAlsoFromWithin) {
    int ticks = 0;
    platform::TimerHandle handle = loop.every(Milliseconds{1}, [&] {
        if (++ticks == 3) handle.reset();
    });
    loop.runUntil([&] { return ticks >= 3; });
    loop.sleep(Milliseconds{20});
    EXPECT_EQ(ticks, 3);
}

TEST_F(QtEventLoopTest, ADescriptorIsWatchedUntilItsHandleGoesAlsoFromWithin) {
    test::Pipe pipe;
    std::string heard;
    platform::TimerHandle handle = loop.whenReadable(pipe.descriptor(), [&] {
        heard += pipe.read();
        if (heard == "onetwo") handle.reset();
    });
    pipe.write("one");
    loop.runUntil([&] { return heard == "one"; });
    pipe.write("two");
    loop.runUntil([&] { return heard == "onetwo"; });
    pipe.write("three");
    loop.sleep(Milliseconds{1});
    EXPECT_EQ(heard, "onetwo");
    bool ended = false;
    handle = loop.whenReadable(pipe.descriptor(), [&] { ended = pipe.read().empty(); });
    pipe.closeInput();
    loop.runUntil([&] { return ended; });
}

TEST_F(QtEventLoopTest, FailuresAreReportedAndTheLoopGoesOn) {
    bool later = false;
    loop.post([] { throw std::runtime_error("broken"); });
    loop.post([] { throw 1; });
    loop.post([&] { later = true; });
    loop.runUntil([&] { return later; });
    EXPECT_THAT(failures, testing::ElementsAre("broken", "unknown failure"));
}

// A procedure that is still waiting when the toolkit was told to quit has to wait, not to spin.
TEST_F(QtEventLoopTest, StillWaitsAfterTheToolkitWasToldToQuit) {
    QCoreApplication::quit();
    const Milliseconds before = loop.clock().sinceStart();
    loop.sleep(Milliseconds{25});
    EXPECT_GE(loop.clock().sinceStart() - before, Milliseconds{24});
}

}  // namespace
}  // namespace vantrel::qt
