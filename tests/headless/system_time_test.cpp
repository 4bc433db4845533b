#include "headless/system_time.h"

#include <string>

#include <gtest/gtest.h>

#include "headless/descriptor_lines.h"
#include "support/pipe.h"

namespace vantrel::headless {
namespace {

using namespace std::chrono_literals;
using platform::TimerHandle;

class SystemTimeTest : public testing::Test {
  protected:
    SystemTime time_{SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop_{time_};
    vantrel::test::Pipe first_, second_;
    std::string heard_;
};

// The waits below would take an hour if they didn't end by what was written.
TEST_F(SystemTimeTest, WhatIsReadableRunsItsHandlerAndEndsTheWait) {
    const TimerHandle hour = loop_.every(1h, [] {});
    const TimerHandle a = loop_.whenReadable(first_.descriptor(), [&] {
        const std::string text = first_.read();
        heard_ += "first " + text + ". ";
        if (text == "here") second_.write("too");
    });
    const TimerHandle b =
        loop_.whenReadable(second_.descriptor(), [&] { heard_ += "second " + second_.read() + ". "; });
    first_.write("here");
    loop_.runUntil([&] { return heard_.size() > 12; });
    EXPECT_EQ(heard_, "first here. second too. ");
    first_.closeInput();
    loop_.runUntil([&] { return heard_.ends_with("first . "); });  // the end is readable, too
}

TEST_F(SystemTimeTest, NothingRunsOnceTheHandleIsGone) {
    TimerHandle b = loop_.whenReadable(second_.descriptor(), [&] { heard_ += "second"; });
    const TimerHandle a = loop_.whenReadable(first_.descriptor(), [&] {
        heard_ += first_.read();
        b.reset();
    });
    first_.write("first");
    loop_.yield();
    second_.write("x");
    loop_.yield();
    loop_.yield();
    EXPECT_EQ(heard_, "first");
}

TEST_F(SystemTimeTest, AHandlerThatNeverReadsLeavesTimersTheirTurn) {
    const TimerHandle stuck = loop_.whenReadable(first_.descriptor(), [] {});
    first_.write("x");
    int ticks = 0;
    const TimerHandle timer = loop_.every(1ms, [&] { ++ticks; });
    loop_.runUntil([&] { return ticks >= 3; });  // a busy machine may let several pass in one turn
    loop_.sleep(1ms);
}

// ---- descriptor lines

using Kind = Incoming::Kind;

TEST(DescriptorCommands, ComeWholeHoweverTheyAreCut) {
    vantrel::test::Pipe pipe;
    DescriptorCommands commands(pipe.descriptor(), 10);
    EXPECT_EQ(commands.next(false).kind, Kind::kNothingYet);
    pipe.write("one\ntw");
    EXPECT_EQ(commands.next(true).line, "one");
    EXPECT_EQ(commands.next(false).kind, Kind::kNothingYet);
    pipe.write("o\n" + std::string(100, 'x'));
    EXPECT_EQ(commands.next(true).line, "two");
    EXPECT_EQ(commands.next(false).kind, Kind::kNothingYet);
    pipe.write(std::string(100, 'x') + "\n" + std::string("nul\0\n", 5) + "last");
    EXPECT_EQ(commands.next(true).kind, Kind::kTooLong);
    EXPECT_EQ(commands.next(true).line, std::string("nul\0", 4));
    pipe.closeInput();
    EXPECT_EQ(commands.next(true).line, "last");
    EXPECT_EQ(commands.next(true).kind, Kind::kEnd);
    EXPECT_EQ(commands.next(false).kind, Kind::kEnd);
}

TEST(DescriptorReplies, AreLinesUntilNobodyListens) {
    const vantrel::test::Pipe pipe;
    DescriptorReplies replies(pipe.input());
    EXPECT_TRUE(replies.send("{}"));
    EXPECT_EQ(pipe.read(), "{}\n");
    EXPECT_FALSE(DescriptorReplies(-1).send("{}"));
}

}  // namespace
}  // namespace vantrel::headless
