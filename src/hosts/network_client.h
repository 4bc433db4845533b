// The HTTP client that really uses the network.
#pragma once

#include <memory>
#include <vector>

#include "hosts/http_client.h"
#include "platform/event_loop.h"
#include "platform/http/http_transfers.h"

namespace vantrel::hosts {

/// Looks after its requests from a timer of the loop, for as long as there are any, and never keeps the loop
/// for more than some milliseconds.
class NetworkClient : public HttpClient {
  public:
    explicit NetworkClient(platform::EventLoop& loop);
    ~NetworkClient() override;

    HttpExchange send(const platform::HttpRequest& request, std::function<void(HttpOutcome)> done) override;
    bool serve(platform::Milliseconds atMost) override;

  private:
    struct Exchange;

    void tick();
    bool move();
    void deliver();

    platform::EventLoop& loop_;
    std::shared_ptr<platform::HttpTransfers> transfers_;
    std::vector<std::weak_ptr<Exchange>> exchanges_;
    platform::TimerHandle timer_;
};

}  // namespace vantrel::hosts
