// A network without a network: HTTP in virtual time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "hosts/http_client.h"
#include "platform/queued_event_loop.h"

namespace vantrel::test {

struct FakeReply {
    hosts::HttpOutcome outcome = platform::HttpAnswer{};
    platform::Milliseconds after{2};
    bool never = false;  // silence, until the request's time is up
};

/// Whatever `answer` says comes after its time, but no later than the request's limits allow.
class FakeHttp : public hosts::HttpClient {
  public:
    explicit FakeHttp(platform::QueuedEventLoop& loop) : loop_(loop) {}

    std::function<FakeReply(const platform::HttpRequest&)> answer;

    /// Requests that are under way now.
    std::size_t underWay() const {
        std::size_t count = 0;
        for (const auto& exchange : exchanges_) count += exchange.expired() ? 0 : 1;
        return count;
    }

    hosts::HttpExchange send(const platform::HttpRequest& request,
                             std::function<void(hosts::HttpOutcome)> done) override {
        FakeReply reply = answer(request);
        const bool late = reply.never || reply.after > request.limits.whole;
        if (late)
            reply = {platform::HttpError(platform::HttpError::Kind::kTimedOut, "no answer in time"),
                     request.limits.whole};
        const auto* whole = std::get_if<platform::HttpAnswer>(&reply.outcome);
        if (whole != nullptr && whole->body.size() > request.limits.body)
            reply.outcome = platform::HttpError(platform::HttpError::Kind::kTooLarge, "too much");
        auto exchange = std::make_shared<platform::TimerHandle>();
        *exchange = loop_.after(reply.after, [done = std::move(done), outcome = std::move(reply.outcome),
                                              weak = std::weak_ptr(exchange)] {
            if (const auto held = weak.lock()) done(outcome);
        });
        std::erase_if(exchanges_, [](const auto& old) { return old.expired(); });
        exchanges_.push_back(exchange);
        return exchange;
    }

    bool serve(platform::Milliseconds /*atMost*/) override { return false; }

  private:
    platform::QueuedEventLoop& loop_;
    std::vector<std::weak_ptr<platform::TimerHandle>> exchanges_;
};

}  // namespace vantrel::test
