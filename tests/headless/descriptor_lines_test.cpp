#include "headless/descriptor_lines.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace vantrel::headless {
namespace {

using Kind = Incoming::Kind;

struct Pipe : testing::Test {
    Pipe() { EXPECT_EQ(::pipe(ends), 0); }
    ~Pipe() override {
        ::close(ends[0]);
        closeInput();
    }
    void write(const std::string& text) {
        EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void closeInput() {
        if (ends[1] >= 0) ::close(ends[1]);
        ends[1] = -1;
    }
    int ends[2] = {-1, -1};
};

TEST_F(Pipe, LinesComeWholeHoweverTheyAreCut) {
    DescriptorCommands commands(ends[0], 10);
    EXPECT_EQ(commands.next(false).kind, Kind::kNothingYet);
    write("one\ntw");
    EXPECT_EQ(commands.next(true).line, "one");
    EXPECT_EQ(commands.next(false).kind, Kind::kNothingYet);
    write("o\n" + std::string(100, 'x'));
    EXPECT_EQ(commands.next(true).line, "two");
    EXPECT_EQ(commands.next(false).kind, Kind::kNothingYet);
    write(std::string(100, 'x') + "\n" + std::string("nul\0\n", 5) + "last");
    EXPECT_EQ(commands.next(true).kind, Kind::kTooLong);
    EXPECT_EQ(commands.next(true).line, std::string("nul\0", 4));
    closeInput();
    EXPECT_EQ(commands.next(true).line, "last");
    EXPECT_EQ(commands.next(true).kind, Kind::kEnd);
    EXPECT_EQ(commands.next(false).kind, Kind::kEnd);
}

TEST_F(Pipe, RepliesAreLinesUntilNobodyListens) {
    DescriptorReplies replies(ends[1]);
    EXPECT_TRUE(replies.send("{}"));
    char got[4] = {};
    EXPECT_EQ(::read(ends[0], got, sizeof got), 3);
    EXPECT_STREQ(got, "{}\n");
    EXPECT_FALSE(DescriptorReplies(-1).send("{}"));
}

}  // namespace
}  // namespace vantrel::headless
