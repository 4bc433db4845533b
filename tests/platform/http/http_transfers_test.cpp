#include "platform/http/http_transfers.h"

#include <gtest/gtest.h>

#include "support/scripted_server.h"

namespace vantrel::platform {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using test::httpAnswer;
using test::Script;
using enum HttpError::Kind;

const HttpLimits kSmall{.body = 1000, .connecting = 5s, .whole = 20s, .drip = {}};

class HttpTransfersTest : public testing::Test {
  protected:
    HttpAnswer fetch(HttpRequest request) {
        if (request.url.empty()) request.url = server_.url();
        const auto transfer = transfers_.start(request);
        while (!transfer->isOver()) {
            transfers_.waitForMovement(1ms);
            transfers_.move();
            server_.serve();
        }
        return transfer->take();
    }

    std::optional<HttpError::Kind> failureOf(const HttpRequest& request) {
        try {
            fetch(request);
            return std::nullopt;
        } catch (const HttpError& error) {
            EXPECT_STRNE(error.what(), "");
            return error.kind();
        }
    }

    test::ScriptedServer server_;
    HttpTransfers transfers_;
};

TEST_F(HttpTransfersTest, BringsTheAnswerWhateverItsStatus) {
    server_.scripts = {{{httpAnswer("hello", "200 OK", "Content-Type: text/plain; charset=utf-8\r\n")}},
                       {{httpAnswer("no such page", "404 Not Found")}},
                       {{httpAnswer("elsewhere", "302 Found", "Location: /other\r\n")}}};
    const HttpAnswer good = fetch({.limits = kSmall});
    EXPECT_EQ(good.status, 200);
    EXPECT_EQ(good.contentType, "text/plain; charset=utf-8");
    EXPECT_EQ(good.body, "hello");
    EXPECT_EQ(fetch({.limits = kSmall}).status, 404);
    EXPECT_EQ(fetch({.limits = kSmall}).status, 302) << "a redirect that wasn't to be followed";
    EXPECT_EQ(server_.requests.size(), 3U);
}

TEST_F(HttpTransfersTest, SendsWhatIsPut) {
    server_.scripts = {{{httpAnswer("")}}};
    fetch({.method = HttpRequest::Method::kPut,
           .url = server_.url("/x?a=1"),
           .accept = "application/json",
           .form = "RightAscension=1.5&Declination=-3",
           .limits = kSmall});
    ASSERT_EQ(server_.requests.size(), 1U);
    const std::string& request = server_.requests[0];
    EXPECT_TRUE(request.starts_with("PUT /x?a=1 HTTP/1.1\r\n")) << request;
    EXPECT_NE(request.find("\r\nAccept: application/json\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("\r\nContent-Type: application/x-www-form-urlencoded\r\n"), std::string::npos);
    EXPECT_TRUE(request.ends_with("\r\n\r\nRightAscension=1.5&Declination=-3")) << request;
}

TEST_F(HttpTransfersTest, KeepsTheConnectionForTheNextRequest) {
    server_.scripts = {{{httpAnswer("one")}, "", false}, {{httpAnswer("two")}, "", false}};
    EXPECT_EQ(fetch({.limits = kSmall}).body, "one");
    EXPECT_EQ(fetch({.limits = kSmall}).body, "two");
    EXPECT_EQ(server_.accepted, 1);
}

TEST_F(HttpTransfersTest, TakesNoSecondAnswerForTheNextRequests) {
    server_.scripts = {{{httpAnswer("one") + httpAnswer("late and false")}, "", false},
                       {{httpAnswer("two")}, "", false}};
    EXPECT_EQ(fetch({.limits = kSmall}).body, "one");
    EXPECT_EQ(fetch({.limits = kSmall}).body, "two");
}

TEST_F(HttpTransfersTest, FollowsRedirectsAndUnpacksWhereAllowed) {
    const std::string packed(
        "\x1f\x8b\x08\0\0\0\0\0\0\x03\xcb\x48\xcd\xc9\xc9\x07\0\x86\xa6\x10\x36\x05\0\0\0", 25);
    server_.scripts = {{{httpAnswer("", "301 Moved", "Location: /there\r\n")}},
                       {{httpAnswer(packed, "200 OK", "Content-Encoding: gzip\r\n")}}};
    EXPECT_EQ(fetch({.limits = kSmall, .redirects = 2, .mayBePacked = true}).body, "hello");
}

TEST_F(HttpTransfersTest, GivesUpWithoutALook) {
    server_.scripts = {{{}, "", false}};
    { const auto transfer = transfers_.start({.url = server_.url(), .limits = kSmall}); }
    transfers_.move();
    server_.serve();
    EXPECT_TRUE(server_.requests.empty());
}

// ---- servers that mean no good, or are none

struct Hostile {
    const char* why;
    Script script;
    HttpError::Kind ends;
    int redirects = 0;
};

void PrintTo(const Hostile& row, std::ostream* out) { *out << row.why; }

class HostileServer : public HttpTransfersTest, public testing::WithParamInterface<Hostile> {};

TEST_P(HostileServer, EndsInTime) {
    server_.scripts = {GetParam().script};
    HttpLimits limits = kSmall;
    limits.body = 100'000;
    limits.drip = HttpLimits::Drip{.bytesPerSecond = 1'000'000, .patience = 1s};
    EXPECT_EQ(failureOf({.limits = limits, .redirects = GetParam().redirects, .mayBePacked = true}),
              GetParam().ends);
}

const std::string kHead = "HTTP/1.1 200 OK\r\n";
// A call of serve() follows a wait of up to 1 ms. Without rests a fast machine sends 100 KB, drop by drop,
// before the patience ends, and that is too large, not too slow.
const int kBetweenDrops = 20;

const Hostile kHostile[] = {
    {"a body that never ends", {{kHead + "\r\n"}, std::string(30'000, 'x')}, kTooLarge},
    {"more than was wanted", {{httpAnswer(std::string(100'001, 'x'))}}, kTooLarge},
    {"chunks that never end",
     {{kHead + "Transfer-Encoding: chunked\r\n\r\n"}, "2000\r\n" + std::string(0x2000, 'x') + "\r\n"},
     kTooLarge},
    {"headers that never end", {{kHead}, "X-Padding: " + std::string(3000, 'x') + "\r\n"}, kTooLarge},
    {"interim answers that never end",
     {{}, "HTTP/1.1 103 Early Hints\r\nLink: " + std::string(2000, 'x') + "\r\n\r\n"},
     kTooLarge},
    {"a body in drops", {{kHead + "\r\n"}, "x", true, kBetweenDrops}, kTimedOut},
    {"silence", {{}, "", false}, kTimedOut},
    {"an end before anything", {{}}, kBroken},
    {"an end in the body", {{kHead + "Content-Length: 5\r\n\r\nhe"}}, kBroken},
    {"something else than HTTP", {{"SSH-2.0-OpenSSH_9.2\r\n"}}, kRefused},
    {"a length that is none", {{kHead + "Content-Length: -5\r\n\r\nhello"}}, kBroken},
    {"packed rubbish", {{httpAnswer("not gzip", "200 OK", "Content-Encoding: gzip\r\n")}}, kBroken},
    {"a redirect to a file",
     {{httpAnswer("", "302 Found", "Location: file:///etc/passwd\r\n")}},
     kRefused,
     5},
    {"redirects in a circle", {{httpAnswer("", "302 Found", "Location: /again\r\n")}}, kRefused, 5}};

INSTANTIATE_TEST_SUITE_P(Kinds, HostileServer, testing::ValuesIn(kHostile));

/// 100 KB of zeros in 100 bytes and something.
TEST_F(HttpTransfersTest, CountsUnpackedBytes) {
    std::string bomb = "\x1f\x8b\x08\0\0\0\0\0\0\x03\xed\xc1\x01\x0d\0\0\0\xc2\xa0\xf7\x4f\x6d\x0e\x37\xa0"s;
    bomb += std::string(73, '\0');
    server_.scripts = {{{httpAnswer(bomb, "200 OK", "Content-Encoding: gzip\r\n")}}};
    EXPECT_EQ(failureOf({.limits = kSmall, .mayBePacked = true}), kTooLarge);
}

TEST_F(HttpTransfersTest, TakesNoOtherAddresses) {
    for (const char* url :
         {"file:///etc/passwd", "ftp://127.0.0.1/x", "gopher://127.0.0.1/x", "http://", "no address"})
        EXPECT_NE(failureOf({.url = url, .limits = {.whole = 1s}}).value(), kTimedOut) << url;
    server_.stopListening();
    EXPECT_EQ(failureOf({.limits = kSmall}), kUnreachable);
}

TEST_F(HttpTransfersTest, HasALimitForTheWholeTime) {
    server_.scripts = {{{kHead + "\r\n"}, "x"}};  // faster than drops, and for ever
    EXPECT_EQ(failureOf({.limits = {.body = std::size_t{1} << 30U, .whole = 300ms}}), kTimedOut);
}

}  // namespace
}  // namespace vantrel::platform
