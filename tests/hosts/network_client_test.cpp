#include "hosts/network_client.h"

#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "platform/queued_event_loop.h"
#include "support/scripted_server.h"

namespace vantrel::hosts {
namespace {

using namespace std::chrono_literals;
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

TEST_F(NetworkClientTest, TellsFromTheLoop) {
    server.scripts = {{{httpAnswer("hello")}}};
    std::string heard;
    const HttpExchange exchange =
        client->send(request(), [&](const HttpOutcome& outcome) { heard = seen(outcome); });
    EXPECT_EQ(heard, "");
    runUntil([&] { return !heard.empty(); });
    EXPECT_EQ(heard, "hello");
}

TEST_F(NetworkClientTest, MovesBytesForWhoeverWaitsForThem) {
    server.scripts = {{{httpAnswer("hello")}}};
    std::string heard;
    HttpExchange exchange =
        client->send(request(), [&](const HttpOutcome& outcome) { heard = seen(outcome); });
    while (heard.empty()) {
        EXPECT_TRUE(client->serve(1ms));
        server.serve();
    }
    EXPECT_EQ(heard, "hello");
    EXPECT_FALSE(client->serve(1ms)) << "nothing is under way any more";
}

TEST_F(NetworkClientTest, AsksTheNextFromInsideAnAnswer) {
    server.scripts = {{{httpAnswer("one")}}, {{httpAnswer("two")}}};
    std::string heard;
    HttpExchange second;
    HttpExchange first = client->send(request(), [&](const HttpOutcome& outcome) {
        first.reset();
        heard = seen(outcome);
        second = client->send(request(), [&](const HttpOutcome& next) { heard += seen(next); });
    });
    runUntil([&] { return heard.size() >= 6; });
    EXPECT_EQ(heard, "onetwo");
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
    server.scripts = {{{httpAnswer("hello")}}, {{httpAnswer("other")}}};
    std::string heard;
    {
        const HttpExchange exchange =
            client->send(request(), [&](const HttpOutcome&) { heard = "the first"; });
    }
    const HttpExchange other = client->send(request(), [&](const HttpOutcome&) { heard += "the second"; });
    runUntil([&] { return !heard.empty(); });
    EXPECT_EQ(heard, "the second");
}

TEST_F(NetworkClientTest, MayGoBeforeItsExchanges) {
    server.scripts = {{{}, "", false}};
    const HttpExchange exchange = client->send(request(), [](const HttpOutcome&) {});
    client.reset();
    EXPECT_NE(exchange, nullptr);
}

}  // namespace
}  // namespace vantrel::hosts
