#include "hosts/network_client.h"

namespace vantrel::hosts {

using platform::HttpError;
using platform::HttpRequest;
using platform::HttpTransfer;
using platform::HttpTransfers;
using platform::Milliseconds;

namespace {

constexpr Milliseconds kBetweenLooks{10};
constexpr Milliseconds kLongestLook{10};  // half the time is left for everything else

HttpOutcome outcomeOf(HttpTransfer& transfer) {
    try {
        return transfer.take();
    } catch (const HttpError& error) {
        return error;
    }
}

}  // namespace

struct NetworkClient::Exchange {
    std::shared_ptr<HttpTransfers> transfers;  // which the transfer must not outlive
    std::unique_ptr<HttpTransfer> transfer;
    std::function<void(HttpOutcome)> done;
};

NetworkClient::NetworkClient(platform::EventLoop& loop)
    : loop_(loop), transfers_(std::make_shared<HttpTransfers>()) {}

NetworkClient::~NetworkClient() = default;

HttpExchange NetworkClient::send(const HttpRequest& request, std::function<void(HttpOutcome)> done) {
    auto exchange =
        std::make_shared<Exchange>(Exchange{transfers_, transfers_->start(request), std::move(done)});
    exchanges_.push_back(exchange);
    if (timer_ == nullptr) timer_ = loop_.every(kBetweenLooks, [this] { tick(); });
    return exchange;
}

void NetworkClient::tick() {
    const Milliseconds start = loop_.clock().sinceStart();
    while (move() && loop_.clock().sinceStart() - start < kLongestLook) {
    }
    if (exchanges_.empty()) timer_.reset();
}

bool NetworkClient::serve(Milliseconds atMost) {
    const bool moved = move();
    if (!moved && !exchanges_.empty()) transfers_->waitForMovement(atMost);
    return moved || !exchanges_.empty();
}

bool NetworkClient::move() {
    const bool moved = transfers_->move();
    deliver();
    return moved;
}

/// The listener may send the next request or give others up.
void NetworkClient::deliver() {
    const auto exchanges = exchanges_;
    for (const auto& held : exchanges) {
        const auto exchange = held.lock();
        if (exchange == nullptr || exchange->transfer == nullptr || !exchange->transfer->isOver()) continue;
        const auto transfer = std::move(exchange->transfer);
        const auto done = std::move(exchange->done);
        done(outcomeOf(*transfer));
    }
    std::erase_if(exchanges_, [](const auto& held) {
        const auto exchange = held.lock();
        return exchange == nullptr || exchange->transfer == nullptr;
    });
}

}  // namespace vantrel::hosts
