#include "hosts/name_lookup.h"

#include <algorithm>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

#include <netdb.h>

namespace vantrel::hosts {
namespace {

FoundAddresses addressesOf(const std::string& host, int port, int flags) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = flags | AI_NUMERICSERV;
    addrinfo* list = nullptr;
    const int failure = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &list);
    if (failure != 0) return {{}, ::gai_strerror(failure)};
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
    FoundAddresses found;
    for (const addrinfo* one = list; one != nullptr; one = one->ai_next) {
        SocketAddress address;
        address.length = std::min<socklen_t>(one->ai_addrlen, sizeof address.address);
        std::memcpy(&address.address, one->ai_addr, address.length);
        found.addresses.push_back(address);
    }
    return found;
}

}  // namespace

FoundAddresses askResolver(const ServerAddress& server) {
    return addressesOf(server.host, server.port, AI_ADDRCONFIG);
}

std::optional<FoundAddresses> knownAddresses(const ServerAddress& server) {
    const bool here = server.host == "localhost";
    FoundAddresses found = addressesOf(here ? "127.0.0.1" : server.host, server.port, AI_NUMERICHOST);
    if (found.addresses.empty()) return std::nullopt;
    if (here)
        for (const SocketAddress& address : addressesOf("::1", server.port, AI_NUMERICHOST).addresses)
            found.addresses.push_back(address);
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
