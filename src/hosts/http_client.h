// Requests to devices' HTTP servers, in the loop's time.
#pragma once

#include <functional>
#include <memory>
#include <variant>

#include "platform/http/http_message.h"

namespace vantrel::hosts {

using HttpOutcome = std::variant<platform::HttpAnswer, platform::HttpError>;

/// A request under way, which is given up when the last of these goes.
using HttpExchange = std::shared_ptr<void>;

class HttpClient {
  public:
    virtual ~HttpClient() = default;

    /// Returns at once. `done` hears what became of it, from the event loop or out of serve(), and may let go
    /// of the exchange there.
    [[nodiscard]] virtual HttpExchange send(const platform::HttpRequest& request,
                                            std::function<void(HttpOutcome)> done) = 0;

    /// Lets bytes move for at most so long, or until some did, while nothing else runs. False when there is
    /// nothing that could move, and no time has passed.
    virtual bool serve(platform::Milliseconds atMost) = 0;
};

}  // namespace vantrel::hosts
