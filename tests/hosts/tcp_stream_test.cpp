#include "hosts/tcp_stream.h"

#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "hosts/loopback_server.h"
#include "platform/queued_event_loop.h"

namespace vantrel::hosts {
namespace {

using namespace std::chrono_literals;
using platform::Milliseconds;

class TcpStreamTest : public testing::Test {
  protected:
    StreamListener listener() {
        return {.onOpen = [this] { open_ = true; },
                .onBytes = [this](std::string_view bytes) { heard_ += bytes; },
                .onEnd = [this](const std::string& why) { ends_.push_back(why); }};
    }
    std::unique_ptr<ByteStream> connected() {
        auto stream = streams_.open({"localhost", server_.port()}, listener());
        loop_.runUntil([&] { return open_; });
        server_.accept();
        return stream;
    }
    void runUntilHeard(const std::string& text) {
        loop_.runUntil([&] { return heard_ == text; });
    }
    void runUntilEnded() {
        loop_.runUntil([&] { return !ends_.empty(); });
    }

    headless::SystemTime time_{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop_{time_};
    TcpStreams streams_{loop_};
    test::LoopbackServer server_;
    bool open_ = false;
    std::string heard_;
    std::vector<std::string> ends_;
};

TEST_F(TcpStreamTest, CarriesBytesBothWays) {
    const auto stream = streams_.open({"localhost", server_.port()}, listener());
    stream->send("early ");
    EXPECT_FALSE(open_);
    loop_.runUntil([&] { return open_; });
    server_.accept();
    stream->send("late");
    std::string got;
    loop_.runUntil([&] {
        got += server_.receive();
        return got.size() == 10;
    });
    EXPECT_EQ(got, "early late");
    server_.send("answer");
    runUntilHeard("answer");
    EXPECT_EQ(ends_, std::vector<std::string>{});
}

TEST_F(TcpStreamTest, ServesItselfWhileNothingElseRuns) {
    const auto stream = streams_.open({"127.0.0.1", server_.port()}, listener());
    bool ran = false;
    loop_.post([&] { ran = true; });
    while (!open_) ASSERT_TRUE(stream->serve(1s));
    server_.accept();
    server_.send("answer");
    while (heard_.empty()) ASSERT_TRUE(stream->serve(1s));
    server_.hangUp();
    while (ends_.empty()) ASSERT_TRUE(stream->serve(1s));
    EXPECT_FALSE(stream->serve(1s));
    EXPECT_FALSE(ran);
}

TEST_F(TcpStreamTest, SaysHowItEnded) {
    const struct {
        std::function<void()> what;
        const char* why;
    } cases[] = {
        {[&] { server_.hangUp(); }, "the server closed the connection"},
        {[&] { server_.reset(); }, "the connection was reset"},
    };
    for (const auto& [what, why] : cases) {
        const auto stream = connected();
        what();
        runUntilEnded();
        stream->send("nobody hears it");
        loop_.sleep(1ms);
        EXPECT_EQ(ends_, std::vector<std::string>{why});
        EXPECT_FALSE(stream->serve(1s));
        ends_.clear();
        open_ = false;
    }
    server_.stopListening();
    const auto stream = streams_.open({"localhost", server_.port()}, listener());
    runUntilEnded();
    EXPECT_EQ(ends_, std::vector<std::string>{"connection refused"});
    EXPECT_FALSE(open_);
}

TEST_F(TcpStreamTest, WhoClosesItHearsNothingMore) {
    std::unique_ptr<ByteStream> stream;
    stream = streams_.open({"localhost", server_.port()},
                           {.onOpen = [this] { open_ = true; },
                            .onBytes =
                                [&](std::string_view bytes) {
                                    heard_ += bytes;
                                    stream->close();
                                },
                            .onEnd = [this](const std::string& why) { ends_.push_back(why); }});
    loop_.runUntil([&] { return open_; });
    server_.accept();
    server_.send("once");
    runUntilHeard("once");
    server_.send("twice");
    server_.hangUp();
    loop_.yield();
    loop_.yield();
    EXPECT_EQ(heard_, "once");
    EXPECT_EQ(ends_, std::vector<std::string>{});
}

TEST_F(TcpStreamTest, ALongDownloadComesInSlicesBetweenOtherHandlers) {
    const auto stream = connected();
    const std::string all(30'000'000, 'x');
    std::size_t sent = 0;
    std::size_t most = 0, before = 0;
    loop_.runUntil([&] {
        most = std::max(most, heard_.size() - before);
        before = heard_.size();
        sent += server_.send(std::string_view(all).substr(sent));
        return heard_.size() == all.size();
    });
    EXPECT_LE(most, 3U << 20U);
    EXPECT_EQ(heard_, all);
}

TEST_F(TcpStreamTest, AServerThatTakesNothingIsGivenUpBeforeMemoryFills) {
    const auto stream = connected();
    const std::string text(100'000, 'x');
    for (int i = 0; i < 1000; ++i) stream->send(text);
    runUntilEnded();
    EXPECT_EQ(ends_, std::vector<std::string>{"the server doesn't take what is sent to it"});
}

TEST_F(TcpStreamTest, WhatAListenerThrowsEndsTheConnection) {
    StreamListener throwing = listener();
    throwing.onBytes = [](std::string_view) { throw std::runtime_error("that makes no sense"); };
    const auto stream = streams_.open({"localhost", server_.port()}, throwing);
    loop_.runUntil([&] { return open_; });
    server_.accept();
    server_.send("x");
    runUntilEnded();
    EXPECT_EQ(ends_, std::vector<std::string>{"that makes no sense"});
}

TEST_F(TcpStreamTest, NamesAreLookedUpBesideTheLoopOnceForAllWhoAsk) {
    std::atomic<int> lookups = 0;
    std::atomic<bool> mayAnswer = false;
    TcpStreams streams(loop_, [&](const ServerAddress& server) {
        ++lookups;
        mayAnswer.wait(false);
        if (server.host == "nowhere") return FoundAddresses{{}, "Name or service not known"};
        return knownAddresses({"127.0.0.1", server.port}).value();
    });
    const auto good = streams.open({"observatory", server_.port()}, listener());
    auto dropped = streams.open({"observatory", server_.port()}, listener());
    dropped.reset();
    const auto bad = streams.open({"nowhere", server_.port()}, listener());
    loop_.sleep(1ms);
    EXPECT_FALSE(open_);
    mayAnswer = true;
    mayAnswer.notify_all();
    loop_.runUntil([&] { return open_ && !ends_.empty(); });
    EXPECT_EQ(ends_, std::vector<std::string>{"Name or service not known"});
    EXPECT_EQ(lookups, 2);
}

}  // namespace
}  // namespace vantrel::hosts
