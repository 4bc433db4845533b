#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "page/own_address.h"

namespace vantrel::page {

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

}  // namespace vantrel::page
