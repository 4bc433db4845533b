#include "hosts/name_lookup.h"

#include <system_error>
#include <thread>
#include <utility>

namespace vantrel::hosts {

using platform::AddressKind;
using platform::SocketAddress;

FoundAddresses askResolver(const ServerAddress& server) {
    return platform::addressesOf(server.host, server.port, AddressKind::kAnyName);
}

std::optional<FoundAddresses> knownAddresses(const ServerAddress& server) {
    const bool here = server.host == "localhost";
    const auto known = [&](const std::string& host) {
        return platform::addressesOf(host, server.port, AddressKind::kNumeric);
    };
    FoundAddresses found = known(here ? "127.0.0.1" : server.host);
    if (found.addresses.empty()) return std::nullopt;
    if (here)
        for (const SocketAddress& address : known("::1").addresses) found.addresses.push_back(address);
    return found;
}

std::shared_ptr<NameLookup> NameLookup::start(ServerAddress server, Resolver resolver) {
    auto lookup = std::make_shared<NameLookup>();
    const auto finish = [lookup](FoundAddresses found) {
        const std::scoped_lock lock(lookup->mutex_);
        lookup->result_ = std::move(found);
        lookup->there_.notify_all();
    };
    try {
        // Nothing ends a lookup early: the thread stays behind, with nothing but what it holds itself.
        std::thread([server = std::move(server), resolver = std::move(resolver), finish] {
            try {
                finish(resolver(server));
            } catch (const std::exception& error) {
                finish({{}, error.what()});
            }
        }).detach();
    } catch (const std::system_error& error) {
        finish({{}, error.what()});
    }
    return lookup;
}

std::optional<FoundAddresses> NameLookup::result() const {
    const std::scoped_lock lock(mutex_);
    return result_;
}

void NameLookup::waitFor(platform::Milliseconds longest) const {
    std::unique_lock lock(mutex_);
    there_.wait_for(lock, longest, [this] { return result_.has_value(); });
}

}  // namespace vantrel::hosts
