#include "hosts/indi/server_link.h"

#include <algorithm>
#include <utility>

#include "hosts/indi/commands.h"

namespace vantrel::hosts::indi {

using platform::EventLoop;
using platform::Milliseconds;

namespace {

constexpr Milliseconds kTick{250};
constexpr Milliseconds kFirstRetry{1000};
constexpr Milliseconds kLongestRetry{15'000};
constexpr Milliseconds kServerSilence{5000};        // after which it is asked
constexpr Milliseconds kLongServerSilence{15'000};  // after which it is gone

}  // namespace

ServerLink::ServerLink(EventLoop& loop, ByteStreams& streams, ServerAddress server,
                       Milliseconds longestElement, LinkListener listener, BlobText* blobs)
    : loop_(loop),
      streams_(streams),
      server_(std::move(server)),
      longestElement_(longestElement),
      listener_(std::move(listener)),
      blobs_(blobs) {}

void ServerLink::start() {
    if (!ticker_) ticker_ = loop_.every(kTick, [this] { tick(); });
    pause_ = kFirstRetry;
    if (state_ == State::kStopped || state_ == State::kPausing) connect();
}

/// Who lets go of the last interest may be the listener: the stream is closed, but stays until the next one.
void ServerLink::stop() {
    ticker_.reset();
    state_ = State::kStopped;
    if (stream_) stream_->close();
}

void ServerLink::send(std::string_view xml) {
    if (open()) stream_->send(xml);
}

void ServerLink::connect() {
    state_ = State::kOpening;
    xml_.emplace([this](XmlElement element) { handle(std::move(element)); }, blobs_);
    stream_ = streams_.open(server_, {.onOpen = [this] { opened(); },
                                      .onBytes = [this](std::string_view bytes) { received(bytes); },
                                      .onEnd = [this](const std::string& why) { ended(why); }});
}

void ServerLink::opened() {
    state_ = State::kOpen;
    pause_ = kFirstRetry;
    answersPings_ = awaitsAnswer_ = false;
    lastHeard_ = lastWhole_ = lastAsked_ = now();
    listener_.onOpen();
    send(pingRequest("known"));  // whether it knows pings should be known before it falls silent
}

void ServerLink::received(std::string_view bytes) {
    lastHeard_ = now();
    try {
        xml_->feed(bytes);
    } catch (const StreamError& error) {
        ended(error.what());
        return;
    }
    if (!xml_->insideElement()) lastWhole_ = now();
}

void ServerLink::ended(const std::string& why) {
    stream_->close();
    const bool wasOpen = std::exchange(state_, State::kPausing) == State::kOpen;
    problem_ = why;
    if (!wasOpen) ++failures_;
    nextAttempt_ = now() + pause_;
    pause_ = std::min(2 * pause_, kLongestRetry);
    if (wasOpen) listener_.onLost(why);
}

void ServerLink::handle(XmlElement element) {
    if (!open()) return;  // stopped by what came before
    lastWhole_ = now();
    if (element.name == "pingReply") answersPings_ = true;
    if (element.name == "pingRequest") return send(pingReply(element.attribute("uid")));
    listener_.onElement(std::move(element));
}

void ServerLink::tick() {
    if (open()) watchSilence();
    if (state_ == State::kPausing && now() >= nextAttempt_) connect();
    if (listener_.onTick) listener_.onTick();
}

void ServerLink::watchSilence() {
    const Milliseconds silence = now() - lastHeard_;
    if (xml_->insideElement() && now() - lastWhole_ > longestElement_)
        return ended("it doesn't end what it sends");
    if (awaitsAnswer_ && silence > kLongServerSilence) return ended("it has stopped answering");
    if (silence > kServerSilence && now() - lastAsked_ > kServerSilence) {
        lastAsked_ = now();
        send(pingRequest("alive"));
        awaitsAnswer_ = answersPings_ || (listener_.askOtherwise && listener_.askOtherwise());
    }
}

}  // namespace vantrel::hosts::indi
