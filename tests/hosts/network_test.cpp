#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>

#include "headless/system_time.h"
#include "hosts/loopback_server.h"
#include "hosts/mount_position.h"
#include "hosts/network_client.h"
#include "hosts/server_text.h"
#include "hosts/tcp_stream.h"
#include "hosts/udp_search.h"
#include "platform/queued_event_loop.h"
#include "support/scripted_server.h"

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
    loop_.runUntil([&] { return (got += server_.receive()) == "early late"; });
    server_.send("answer");
    loop_.runUntil([&] { return heard_ == "answer"; });
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
    loop_.runUntil([&] { return heard_ == "once"; });
    server_.send("twice");
    server_.hangUp();
    loop_.yield();
    loop_.yield();
    EXPECT_EQ(heard_, "once");
    EXPECT_EQ(ends_, std::vector<std::string>{});
}

TEST_F(TcpStreamTest, ALongDownloadComesInSlicesBetweenOtherHandlers) {
    const auto stream = connected();
    std::string all;
    all.resize(30'000'000, 'x');
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

// ---- HTTP

using platform::HttpAnswer;
using platform::HttpError;
using platform::HttpRequest;
using test::httpAnswer;

/// Over the loopback address, in real time.
struct NetworkClientTest : testing::Test {
    std::string seen(const HttpOutcome& outcome) {
        if (const auto* answer = std::get_if<HttpAnswer>(&outcome)) return answer->body;
        return std::string("failed: ") + std::get<HttpError>(outcome).what();
    }
    void runUntil(const std::function<bool()>& done) {
        const auto serving = loop.every(1ms, [this] { server.serve(); });
        const auto start = loop.clock().sinceStart();
        loop.runUntil([&] { return done() || loop.clock().sinceStart() - start > 20s; });
    }
    HttpRequest request() { return {.url = server.url(), .limits = {.body = 100u << 20u, .whole = 10s}}; }

    headless::SystemTime time{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop{time};
    test::ScriptedServer server;
    std::unique_ptr<NetworkClient> client = std::make_unique<NetworkClient>(loop);
};

TEST_F(NetworkClientTest, MovesBytesForWhoeverWaitsAndAsksTheNextFromInsideAnAnswer) {
    server.scripts = {{{httpAnswer("one")}}, {{httpAnswer("two")}}};
    std::string heard;
    HttpExchange second;
    HttpExchange first = client->send(request(), [&](const HttpOutcome& outcome) {
        first.reset();
        heard = seen(outcome);
        second = client->send(request(), [&](const HttpOutcome& next) { heard += seen(next); });
    });
    while (heard.size() < 6) {
        ASSERT_TRUE(client->serve(1ms));
        server.serve();
    }
    EXPECT_EQ(heard, "onetwo");
    EXPECT_FALSE(client->serve(1ms)) << "nothing is under way any more";
}

TEST_F(NetworkClientTest, KeepsTheWindowAliveDuringALargeDownload) {
    server.scripts = {{{httpAnswer(std::string(40u << 20u, 'x'))}}};
    std::size_t size = 0;
    int ticks = 0;
    const HttpExchange exchange =
        client->send(request(), [&](const HttpOutcome& outcome) { size = seen(outcome).size(); });
    const auto window = loop.every(5ms, [&] { ++ticks; });
    runUntil([&] { return size > 0; });
    EXPECT_EQ(size, 40u << 20u);
    EXPECT_GT(ticks, 2);
}

TEST_F(NetworkClientTest, SaysNothingToWhoeverLetGo) {
    server.scripts = {{{httpAnswer("hello")}}, {{httpAnswer("other")}}, {{}, "", false}};
    std::string heard;
    client->send(request(), [&](const HttpOutcome&) { heard = "the first"; });
    const HttpExchange other = client->send(request(), [&](const HttpOutcome&) { heard += "the second"; });
    runUntil([&] { return !heard.empty(); });
    EXPECT_EQ(heard, "the second");
    const HttpExchange last = client->send(request(), [&](const HttpOutcome&) { heard += "the last"; });
    client.reset();
    EXPECT_NE(last, nullptr) << "outlives the client";
}

// ---- searches

/// Somebody on the loopback address who answers whatever is asked.
class Answerer {
  public:
    ~Answerer() { ::close(bound_.number); }
    int port() const { return bound_.port; }

    std::string answer(const std::string& words, int times) {
        char question[2000] = "";
        sockaddr_storage from{};
        socklen_t size = sizeof from;
        pollfd waiting{bound_.number, POLLIN, 0};
        if (::poll(&waiting, 1, 5000) != 1) return "";
        const ssize_t got = ::recvfrom(bound_.number, question, sizeof question, 0,
                                       reinterpret_cast<sockaddr*>(&from), &size);
        for (int i = 0; i < times; ++i)
            ::sendto(bound_.number, words.data(), words.size(), 0, reinterpret_cast<sockaddr*>(&from), size);
        return {question, static_cast<std::size_t>(std::max<ssize_t>(got, 0))};
    }

  private:
    test::LoopbackSocket bound_{SOCK_DGRAM};
};

TEST(UdpSearch, AsksThisMachineAndCutsLongAnswers) {
    Answerer answerer;
    const auto search = searchNetwork({answerer.port(), "ff12::a1:9aca", "who is there"});
    EXPECT_TRUE(search->answers().empty());
    EXPECT_EQ(answerer.answer(std::string(5000, 'x'), 120), "who is there");
    const auto answers = search->answers();
    ASSERT_GT(answers.size(), 0U);
    EXPECT_LE(answers.size(), 100U);
    EXPECT_EQ(answers[0].host, "127.0.0.1");
    EXPECT_EQ(answers[0].words, std::string(1024, 'x'));
    EXPECT_TRUE(searchNetwork({1, "no group", "who is there"})->answers().empty());
}

// ---- what servers say of themselves and of where they point

TEST(OneLine, KeepsSoundCharactersAlone) {
    const struct {
        std::string words, line;
    } rows[] = {
        {" two\r\nlines\x7f. ", "two  lines ."},
        {"\xC3\xA9 \xE2\x84\x96 \xF0\x9F\x94\xAD.", "\xC3\xA9 \xE2\x84\x96 \xF0\x9F\x94\xAD."},
        {"cut \xF0\x9F\x94", "cut ???"},
        {"Latin \xE9t\xE9", "Latin ?t?"},
        {"too long \xC0\xAF \xE0\x80\xAF \xF0\x80\x80\xAF", "too long ?? ??? ????"},
        {"surrogate \xED\xA0\x80", "surrogate ???"},
        {"beyond \xF4\x90\x80\x80 \xF5\x80\x80\x80", "beyond ???? ????"},
        {"\xEF\xBF\xBD \xF0\x90\x80\x80 \xE0\xA0\x80.", "\xEF\xBF\xBD \xF0\x90\x80\x80 \xE0\xA0\x80."},
    };
    for (const auto& row : rows) EXPECT_EQ(oneLine(row.words), row.line);
    EXPECT_EQ(oneLine(std::string(5000, 'x')).size(), 300U);
}

TEST(ParsePort, TakesPortsAlone) {
    for (const int port : {1, 65535}) EXPECT_EQ(parsePort(std::to_string(port)), port);
    for (const char* text : {"", "0", "65536", "-1", " 80", "80 ", "7624x", "99999999999"})
        EXPECT_EQ(parsePort(text), std::nullopt) << text;
}

TEST(MountPosition, SeparationIsTheAngleOnTheSky) {
    const struct {
        MountPosition a, b;
        double degrees;
    } rows[] = {
        {{5, 0}, {5, 0}, 0},        {{5, 10}, {5, -20}, 30},   {{23.5, 0}, {0.5, 0}, 15},
        {{0, 89.5}, {12, 89.5}, 1}, {{3, -90}, {17, 90}, 180}, {{6, 60}, {6.001, 60}, 0.0075},
        {{0, 0}, {6, 45}, 90},
    };
    for (const auto& row : rows) EXPECT_NEAR(separation(row.a, row.b), row.degrees, 1e-9);
}

}  // namespace
}  // namespace vantrel::hosts
