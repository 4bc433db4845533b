// A connection to a server: bytes out, bytes in.
//
// open() returns at once; the listener hears what becomes of it, from the event loop or out of serve(). It
// may send and close() the stream in its functions, but not destroy it there.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace vantrel::hosts {

struct ServerAddress {
    std::string host;  // a name or a numeric address
    int port = 0;

    /// "host:port", and "[numeric address]:port" where the address has colons itself.
    std::string text() const {
        const bool colons = host.find(':') != std::string::npos;
        return (colons ? "[" + host + "]" : host) + ":" + std::to_string(port);
    }
    auto operator<=>(const ServerAddress&) const = default;  // NOLINT(modernize-use-nullptr)
};

struct StreamListener {
    std::function<void()> onOpen;
    std::function<void(std::string_view bytes)> onBytes;
    /// The connection couldn't be made or has ended; why, in words such as "connection refused".
    std::function<void(const std::string& why)> onEnd;
};

class ByteStream {
  public:
    /// Nothing is heard any more.
    virtual ~ByteStream() = default;

    /// Takes the bytes to send; those before it is open wait. Nothing after the end.
    virtual void send(std::string_view bytes) = 0;

    /// Ends it; nothing is heard any more.
    virtual void close() = 0;

    /// Lets bytes move for at most so long, or until some did, while nothing else runs. False when there is
    /// nothing that could move, and no time has passed.
    virtual bool serve(platform::Milliseconds atMost) = 0;
};

class ByteStreams {
  public:
    virtual ~ByteStreams() = default;
    virtual std::unique_ptr<ByteStream> open(const ServerAddress& server, StreamListener listener) = 0;
};

}  // namespace vantrel::hosts
