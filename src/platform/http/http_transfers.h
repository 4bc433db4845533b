// Requests on their way over the network, through libcurl. Nothing here waits unless it is told to.
#pragma once

#include <memory>

#include "platform/http/http_message.h"

namespace vantrel::platform {

/// A request under way. It is given up when this goes.
class HttpTransfer {
  public:
    virtual ~HttpTransfer() = default;

    virtual bool isOver() const = 0;
    /// The answer, whatever its status, of a transfer that is over. Throws HttpError when none came. Once
    /// only.
    virtual HttpAnswer take() = 0;
};

/// Any number of transfers. Connections are kept for the next request to the same server.
class HttpTransfers {
  public:
    HttpTransfers();
    ~HttpTransfers();
    HttpTransfers(const HttpTransfers&) = delete;
    HttpTransfers& operator=(const HttpTransfers&) = delete;

    /// Must not outlive this.
    std::unique_ptr<HttpTransfer> start(const HttpRequest& request);

    /// Moves what can be moved now, at most some 100 KB a transfer. True when something moved, and so another
    /// call may be worth it at once.
    bool move();

    /// Waits until something can be moved, but no longer than this.
    void waitForMovement(Milliseconds atMost);

  private:
    class Connections;
    class CurlTransfer;
    std::unique_ptr<Connections> connections_;
};

}  // namespace vantrel::platform
