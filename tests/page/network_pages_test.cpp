// The page's server over the machine's own loopback: who is served, who is refused, and that the program's
// loop goes on meanwhile.
#include "page/network_pages.h"

#include <array>
#include <list>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "platform/queued_event_loop.h"
#include "platform/sockets.h"

namespace vantrel::page {
namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A browser's end of a connection, in the test's own thread.
class Client {
  public:
    explicit Client(int port) {
        const auto found = platform::addressesOf("127.0.0.1", port, platform::AddressKind::kNumeric);
        socket_ = platform::openStreamSocket(found.addresses.at(0)).number;
        platform::connectSocket(socket_, found.addresses.at(0));  // or soon
    }
    ~Client() { platform::closeSocket(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void send(const std::string& text) {
        unsent_ += text;
        push();
    }
    /// What has come so far.
    const std::string& heard() {
        push();
        std::array<char, 4096> part{};
        while (connected_) {
            const platform::Transfer got = platform::receiveFrom(socket_, part);
            heard_.append(part.data(), got.bytes);
            over_ = over_ || (got.bytes == 0 && !got.notYet);
            if (got.bytes == 0) break;
        }
        return heard_;
    }
    /// The other end has closed it.
    bool over() {
        heard();
        return over_;
    }

  private:
    /// What doesn't go yet, since nobody has answered or there is no room, goes later.
    void push() {
        if (unsent_.empty()) return;
        const std::size_t sent = platform::sendTo(socket_, unsent_).bytes;
        connected_ = connected_ || sent > 0;
        unsent_.erase(0, sent);
    }

    int socket_;
    bool connected_ = false, over_ = false;
    std::string unsent_, heard_;
};

constexpr const char* kToken = "000102030405060708090a0b0c0d0e0f";

class NetworkPagesTest : public testing::Test {
  protected:
    void openPage() {
        page_ = pages_.open("127.0.0.1", 0, {.onStop = [this] { ++stops_; }});
        const std::string address = page_->address();
        port_ = std::stoi(address.substr(std::string("http://127.0.0.1:").size()));
    }
    std::string host() const { return "127.0.0.1:" + std::to_string(port_); }
    std::string request(const std::string& method, const std::string& path,
                        const std::string& more = "") const {
        return method + " " + path + " HTTP/1.1\r\nHost: " + host() + "\r\n" + more + "\r\n";
    }
    /// What comes back until the server has closed the connection, or has said its headers and something.
    std::string answerTo(const std::string& text, const std::string& end = "\r\n\r\n") {
        Client client(port_);
        client.send(text);
        loop_.runUntil([&] { return client.over() || client.heard().find(end) != std::string::npos; });
        return client.heard();
    }

    NetworkSeams seams() {
        NetworkSeams seams;
        seams.secret = [this] {
            Secret secret{};
            for (std::size_t i = 0; i < secret.size(); ++i)
                secret[i] = static_cast<std::uint8_t>(i + 16U * static_cast<unsigned>(secrets_));
            ++secrets_;
            return secret;
        };
        seams.addresses = [this] { return addresses_; };
        seams.picture = {[] { return std::uint64_t{3}; }, [] { return std::string("PNG"); }};
        seams.limits.connections = 12;
        seams.limits.connectionsOfOne = 12;
        seams.limits.streams = 3;
        seams.limits.idleSeconds = 1;
        return seams;
    }

    headless::SystemTime time_{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop_{time_};
    int secrets_ = 0, stops_ = 0, port_ = 0;
    std::vector<OwnAddress> addresses_{{"eth0", "127.0.0.1"}};
    NetworkPages pages_{loop_, seams()};
    std::unique_ptr<platform::LivePage> page_;
};

TEST_F(NetworkPagesTest, ServesWhoKnowsItsAddressAndNobodyElse) {
    openPage();
    const std::string base = std::string("/") + kToken;
    EXPECT_EQ(page_->address(), "http://" + host() + base + "/");
    const std::string other = std::string("/") + "100102030405060708090a0b0c0d0e0f";
    const struct {
        std::string why, request, status;
    } cases[] = {
        {"the page", request("GET", base + "/"), "200"},
        {"without the slash", request("GET", base), "200"},
        {"the picture", request("GET", base + "/picture/3"), "200"},
        {"events", request("GET", base + "/events"), "200"},
        {"another token", request("GET", other + "/"), "404"},
        {"more than the token", request("GET", base + "0/"), "404"},
        {"nothing of that name", request("GET", base + "/settings"), "404"},
        {"stop without the token", request("POST", "/stop"), "404"},
        {"stop with a body", request("POST", base + "/stop", "Content-Length: 2\r\n") + "xx", "404"},
        {"another name for the host", "GET " + base + "/ HTTP/1.1\r\nHost: evil.example\r\n\r\n", "404"},
        {"another port", "GET " + base + "/ HTTP/1.1\r\nHost: 127.0.0.1:1\r\n\r\n", "404"},
        {"no host", "GET " + base + "/ HTTP/1.0\r\n\r\n", "404"},
    };
    for (const auto& [why, asked, status] : cases) {
        const std::string answer = answerTo(asked);
        EXPECT_THAT(answer, StartsWith("HTTP/1.1 " + status)) << why;
        EXPECT_EQ(status == "404", answer.find("Content-Length: 0") != std::string::npos) << why;
        EXPECT_THAT(answer, AllOf(HasSubstr("no-store"), HasSubstr("nosniff"), HasSubstr("no-referrer")))
            << why;
    }
    EXPECT_THAT(answerTo(request("GET", base + "/")), HasSubstr("default-src 'none'"));
    EXPECT_EQ(stops_, 0);
    EXPECT_THAT(answerTo(request("POST", base + "/stop")), StartsWith("HTTP/1.1 204"));
    loop_.runUntil([&] { return stops_ > 0; });
    EXPECT_EQ(stops_, 1);
}

TEST_F(NetworkPagesTest, TellsEveryReaderWhatChangesAndIsFoundAgainAtItsPlace) {
    openPage();
    const std::string events = request("GET", std::string("/") + kToken + "/events");
    Client one(port_), other(port_);
    one.send(events);
    other.send(events);
    const auto both = [&](const std::string& text) {
        loop_.runUntil([&] {
            return one.heard().find(text) != std::string::npos &&
                   other.heard().find(text) != std::string::npos;
        });
    };
    both("\"verdict\":\"\"");
    page_->show({.verdict = "Moving"});
    both("Moving");
    page_->show({.verdict = "Done"});
    both("Done");
    const std::string before = page_->address();
    page_.reset();
    loop_.runUntil([&] { return one.over() && other.over(); });
    openPage();
    EXPECT_EQ(page_->address(), before);
    EXPECT_THAT(answerTo(events, "data: "), HasSubstr("data: "));
}

TEST_F(NetworkPagesTest, SaysWhyItCannotOpen) {
    openPage();
    NetworkPages others(loop_, seams());
    const auto whyNot = [&](const std::string& host, int port) -> std::string {
        try {
            const auto page = others.open(host, port, {});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(whyNot("127.0.0.1", port_), "Can't listen at " + host() + ": Address already in use");
    EXPECT_EQ(whyNot("observatory", 0), "observatory is no numeric address");
    EXPECT_EQ(whyNot("0.0.0.0", 0), "0.0.0.0 stands for every address: one has to be named");
    EXPECT_THAT(whyNot("198.51.100.1", 0), HasSubstr("Cannot assign requested address"));
    EXPECT_EQ(whyNot("", 0), "This computer is in no local network");
}

/// Each of these at once, and still the loop's own timer runs and an honest reader is served.
TEST_F(NetworkPagesTest, BadClientsCostNobodyElseAnything) {
    openPage();
    const std::string base = std::string("/") + kToken;
    const auto served = [&] { return answerTo(request("GET", base + "/")).starts_with("HTTP/1.1 200"); };
    const struct {
        const char* why;
        std::string text;
    } cases[] = {
        {"garbage", "\0\xff\x16\x03\x01 \r\n\r\nGET\r\n\r\n"s},
        {"a request that never ends", "GET " + base + "/ HTTP/1.1\r\nHost: "},
        {"a huge path", "GET /" + std::string(100'000, 'x')},
        {"a huge body",
         request("POST", base + "/stop", "Content-Length: 999999999\r\n") + std::string(50'000, 'b')},
        {"several at once", request("GET", "/") + request("GET", "/x") + request("PUT", base)},
    };
    std::list<Client> bad;
    for (const auto& [why, text] : cases) {
        bad.emplace_back(port_).send(text);
        EXPECT_TRUE(served()) << why;
    }
    for (Client& client : bad) {
        loop_.runUntil([&] { return client.over(); });
        EXPECT_THAT(client.heard(), Not(HasSubstr(" 200 ")));
    }
    EXPECT_EQ(stops_, 0);

    int ticks = 0;
    const auto clock = loop_.every(platform::Milliseconds{10}, [&] { ++ticks; });
    std::list<Client> crowd;
    for (int i = 0; i < 200; ++i) {
        crowd.emplace_back(port_);
        if (i % 2 == 0) crowd.back().send(request("GET", base + (i % 4 == 0 ? "/events" : "/")));
        loop_.yield();
    }
    loop_.runUntil([&] { return ticks > 5; });
    int streams = 0;
    for (Client& client : crowd) streams += client.heard().find("data: ") != std::string::npos ? 1 : 0;
    EXPECT_LE(streams, 3);
    crowd.clear();
    loop_.runUntil([&] { return served(); });
}

TEST(HttpServer, DropsWhoDoesNotRead) {
    headless::SystemTime time(headless::SystemTime::now(), [] { return -1; });
    platform::QueuedEventLoop loop(time);
    HttpServer server(loop, "127.0.0.1", 0,
                      [](const PageRequest&) {
                          return PageAnswer{.status = 200, .type = "text/event-stream", .stream = true};
                      },
                      {.idleSeconds = 1});
    const std::string request = "GET / HTTP/1.1\r\nHost: " + server.place() + "\r\n\r\n";
    Client slow(server.port()), quick(server.port());
    slow.send(request);
    quick.send(request);
    loop.runUntil([&] { return server.streams() == 2; });
    const std::string large(200'000, 'x');
    loop.runUntil([&] {
        server.publish("data: " + large + "\n\n");
        quick.heard();
        return server.streams() < 2;
    });
    server.publish("data: last\n\n");
    loop.runUntil([&] { return quick.heard().find("last") != std::string::npos; });
    EXPECT_EQ(server.streams(), 1U);
}

}  // namespace
}  // namespace vantrel::page
