// Turns servers' names into addresses. A name server may take half a minute to say that it doesn't know, so
// names are looked up beside the program's one thread; numeric addresses and "localhost" are known at once.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "hosts/byte_stream.h"
#include "platform/sockets.h"

namespace vantrel::hosts {

using platform::FoundAddresses;

/// Takes as long as it takes, and runs in a thread of its own.
using Resolver = std::function<FoundAddresses(const ServerAddress& server)>;

/// The operating system's resolver.
FoundAddresses askResolver(const ServerAddress& server);

/// The addresses of a numeric host or "localhost"; nothing when it is another name.
std::optional<FoundAddresses> knownAddresses(const ServerAddress& server);

/// One name being looked up.
class NameLookup {
  public:
    static std::shared_ptr<NameLookup> start(ServerAddress server, Resolver resolver);

    /// Nothing until it is there.
    std::optional<FoundAddresses> result() const;
    /// Waits for it at most so long.
    void waitFor(platform::Milliseconds longest) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable there_;
    std::optional<FoundAddresses> result_;
};

}  // namespace vantrel::hosts
