// Connections in virtual time: what a server would send comes when the test says, from the loop or while
// serve() lets time pass.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hosts/byte_stream.h"
#include "platform/queued_event_loop.h"

namespace vantrel::test {

using hosts::ByteStream;
using hosts::ServerAddress;
using hosts::StreamListener;
using platform::Milliseconds;

/// The server's end of one connection. Stays when the program has closed its own.
class FakeConnection {
  public:
    bool open() const { return open_; }

    /// Sends it after the delay, whatever happens meanwhile unless the connection ends.
    void send(std::string bytes, Milliseconds delay = Milliseconds{0}) {
        schedule(delay, [this, bytes = std::move(bytes)] { listener_.onBytes(bytes); });
    }
    void hangUp(Milliseconds delay = Milliseconds{0}) {
        schedule(delay, [this] { end("the server closed the connection"); });
    }
    /// Nothing gets through any more in either direction, and nobody is told.
    void cutCable() { cut_ = true; }

    std::function<void(const std::string&)> onReceive;

  private:
    friend class FakeNetwork;
    friend class FakeStream;
    struct Due {
        platform::Instant instant;
        std::function<void()> action;
    };

    FakeConnection(platform::VirtualTime& time, platform::QueuedEventLoop& loop, StreamListener listener)
        : time_(time), loop_(loop), listener_(std::move(listener)) {}

    void schedule(Milliseconds delay, std::function<void()> action) {
        const platform::Instant instant = time_.utc() + delay;
        const auto place =
            std::find_if(due_.begin(), due_.end(), [&](const Due& due) { return due.instant > instant; });
        due_.insert(place, {instant, std::move(action)});
        awaitFirst();
    }
    void awaitFirst() {
        if (due_.empty()) return;
        const auto rest = std::max(due_.front().instant - time_.utc(), Milliseconds{0});
        timer_ = loop_.after(rest, [this] { runDue(); });
    }
    void runDue() {
        while (!due_.empty() && due_.front().instant <= time_.utc() && !ended_) {
            const auto action = std::move(due_.front().action);
            due_.erase(due_.begin());
            if (!cut_) action();
        }
        if (!ended_) awaitFirst();
    }
    bool serve(Milliseconds atMost) {
        if (ended_) return false;
        const platform::Instant latest = time_.utc() + atMost;
        time_.passUntil(due_.empty() ? latest : std::min(latest, due_.front().instant));
        runDue();
        return true;
    }
    void end(const std::string& why) {
        close();
        listener_.onEnd(why);
    }
    void close() {
        open_ = false;
        ended_ = true;
    }

    platform::VirtualTime& time_;
    platform::QueuedEventLoop& loop_;
    StreamListener listener_;
    std::vector<Due> due_;
    platform::TimerHandle timer_;
    bool open_ = false;
    bool ended_ = false;
    bool cut_ = false;
};

class FakeStream : public ByteStream {
  public:
    explicit FakeStream(std::shared_ptr<FakeConnection> connection) : connection_(std::move(connection)) {}
    ~FakeStream() override { close(); }
    FakeStream(const FakeStream&) = delete;
    FakeStream& operator=(const FakeStream&) = delete;

    void send(std::string_view bytes) override {
        const auto& connection = *connection_;
        if (connection.open() && !connection.cut_ && connection.onReceive)
            connection.onReceive(std::string(bytes));
    }
    void close() override { connection_->close(); }
    bool serve(Milliseconds atMost) override { return connection_->serve(atMost); }

  private:
    std::shared_ptr<FakeConnection> connection_;
};

class FakeNetwork : public hosts::ByteStreams {
  public:
    FakeNetwork(platform::VirtualTime& time, platform::QueuedEventLoop& loop) : time_(time), loop_(loop) {}

    enum class Answer { kAccept, kRefuse, kNothing };
    Answer answer = Answer::kAccept;
    Milliseconds latency{1};
    /// A connection has been made.
    std::function<void(std::shared_ptr<FakeConnection>)> onConnection;
    long attempts = 0;

    std::unique_ptr<ByteStream> open(const ServerAddress& /*server*/, StreamListener listener) override {
        ++attempts;
        const std::shared_ptr<FakeConnection> connection(
            new FakeConnection(time_, loop_, std::move(listener)));
        const Answer now = answer;
        const std::weak_ptr<FakeConnection> weak = connection;
        if (now == Answer::kRefuse)
            connection->schedule(latency, [weak] { weak.lock()->end("connection refused"); });
        if (now == Answer::kNothing)
            connection->schedule(Milliseconds{3000}, [weak] { weak.lock()->end("no answer"); });
        if (now == Answer::kAccept)
            connection->schedule(latency, [this, weak] {
                const auto accepted = weak.lock();
                accepted->open_ = true;
                onConnection(accepted);
                accepted->listener_.onOpen();
            });
        return std::make_unique<FakeStream>(connection);
    }

  private:
    platform::VirtualTime& time_;
    platform::QueuedEventLoop& loop_;
};

}  // namespace vantrel::test
