// Connections over TCP, served by the event loop: nothing here waits, but for serve().
//
// A name is looked up beside the loop, its addresses are tried one after the other. Then the socket is read
// as it becomes readable, a limited amount a turn, so that a long download leaves the windows their part of
// the time. A peer that has vanished without a word is noticed by the operating system within half a minute
// (keep-alive probes, and a limit on what stays unacknowledged).
#pragma once

#include <map>

#include "hosts/byte_stream.h"
#include "hosts/name_lookup.h"
#include "platform/event_loop.h"

namespace vantrel::hosts {

class TcpStreams : public ByteStreams {
  public:
    explicit TcpStreams(platform::EventLoop& loop, Resolver resolver = askResolver)
        : loop_(loop), resolver_(std::move(resolver)) {}

    std::unique_ptr<ByteStream> open(const ServerAddress& server, StreamListener listener) override;

  private:
    std::shared_ptr<NameLookup> lookUp(const ServerAddress& server);

    platform::EventLoop& loop_;
    Resolver resolver_;
    /// Another asking while a lookup is under way shares it, so that their threads don't pile up.
    std::map<ServerAddress, std::weak_ptr<NameLookup>> lookups_;
};

}  // namespace vantrel::hosts
