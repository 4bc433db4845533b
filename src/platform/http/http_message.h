// What is asked of an HTTP server, and what comes back.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/clock.h"

namespace vantrel::platform {

/// What a server may take of our memory and time. Whatever it does, a transfer ends within these.
struct HttpLimits {
    std::size_t body = std::size_t{1} << 20U;  // bytes, unpacked
    Milliseconds connecting{3000};             // the name service's answer included
    Milliseconds whole{3000};                  // from the start to the last byte
    /// A server that sends less than so much for so long is given up; its thinking counts. Nothing: it may
    /// use up the whole time.
    struct Drip {
        long bytesPerSecond = 0;
        std::chrono::seconds patience{0};
    };
    std::optional<Drip> drip = {};
};

struct HttpRequest {
    enum class Method { kGet, kPut };

    Method method = Method::kGet;
    std::string url = {};     // "http://..." or "https://..."; others are refused
    std::string accept = {};  // media types; empty: any
    std::string form = {};    // body of a PUT: application/x-www-form-urlencoded
    HttpLimits limits = {};
    int redirects = 0;          // that are followed, to http and https only
    bool mayBePacked = false;   // the server may send a compressed body
    bool throughProxy = false;  // the environment's proxies are asked
};

struct HttpAnswer {
    int status = 0;                // 200: good
    std::string contentType = {};  // as sent
    std::string body = {};
};

/// No whole answer came. What it says is one line without the server's name.
class HttpError : public std::runtime_error {
  public:
    enum class Kind {
        kUnreachable,  // no such host, nobody listens
        kTimedOut,     // no answer in time, or one in drops
        kTooLarge,     // more bytes than wanted
        kBroken,       // cut off, or not HTTP
        kRefused,      // an address, a redirect or a protocol that we don\'t follow
    };

    HttpError(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

}  // namespace vantrel::platform
