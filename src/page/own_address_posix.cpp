#include <algorithm>
#include <cstdint>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "page/own_address.h"

namespace vantrel::page {

namespace {

struct Range {
    const char* first;
    int bits;
    int rank;
};

std::optional<std::uint32_t> numberOf(const std::string& host) {
    in_addr address{};
    if (::inet_pton(AF_INET, host.c_str(), &address) != 1) return std::nullopt;
    return ntohl(address.s_addr);
}

/// The lower the likelier; nothing for addresses that the world may reach, and for the machine's own.
std::optional<int> rankOf(const OwnAddress& address) {
    constexpr int kInvented = 2, kOfPrograms = 10;
    static constexpr Range kLocal[] = {
        {"192.168.0.0", 16, 0}, {"10.0.0.0", 8, 0}, {"172.16.0.0", 12, 1}, {"169.254.0.0", 16, kInvented}};
    const auto number = numberOf(address.host);
    for (const Range& range : kLocal) {
        constexpr int kAllBits = 32;
        if (!number || (*number ^ *numberOf(range.first)) >> (kAllBits - range.bits) != 0) continue;
        for (const char* name :
             {"docker", "br-", "veth", "virbr", "vmnet", "vboxnet", "tun", "wg", "lxc", "podman"})
            if (address.interface.starts_with(name)) return kOfPrograms + range.rank;
        return range.rank;
    }
    return std::nullopt;
}

}  // namespace

std::vector<OwnAddress> ownAddresses() {
    std::vector<OwnAddress> found;
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) return found;
    for (const ifaddrs* at = first; at != nullptr; at = at->ifa_next) {
        const bool up = (at->ifa_flags & IFF_UP) != 0 && (at->ifa_flags & IFF_RUNNING) != 0;
        if (!up || at->ifa_addr == nullptr || at->ifa_addr->sa_family != AF_INET) continue;
        char host[INET_ADDRSTRLEN] = "";
        const auto* const place = reinterpret_cast<const sockaddr_in*>(at->ifa_addr);
        ::inet_ntop(AF_INET, &place->sin_addr, host, sizeof host);
        found.push_back({at->ifa_name, host});
    }
    ::freeifaddrs(first);
    return found;
}

std::optional<std::string> localAddress(const std::vector<OwnAddress>& addresses) {
    std::optional<std::string> best;
    int bestRank = 0;
    for (const OwnAddress& address : addresses) {
        const auto rank = rankOf(address);
        if (!rank || (best && *rank >= bestRank)) continue;
        best = address.host;
        bestRank = *rank;
    }
    return best;
}

}  // namespace vantrel::page
