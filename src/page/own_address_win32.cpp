#include <cstddef>
#include <cstring>

#include "page/own_address.h"
#include "platform/win32_calls.h"

namespace vantrel::page {

std::vector<OwnAddress> ownAddresses() {
    constexpr ULONG kFlags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
    ULONG size = 64 * 1024;
    std::vector<std::byte> memory;
    ULONG failed = ERROR_BUFFER_OVERFLOW;
    for (int tries = 0; failed == ERROR_BUFFER_OVERFLOW && tries < 3; ++tries) {
        memory.resize(size);
        failed = ::GetAdaptersAddresses(AF_INET, kFlags, nullptr,
                                        reinterpret_cast<IP_ADAPTER_ADDRESSES*>(memory.data()), &size);
    }
    std::vector<OwnAddress> found;
    if (failed != NO_ERROR) return found;
    for (auto* at = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(memory.data()); at != nullptr;
         at = at->Next) {
        if (at->OperStatus != IfOperStatusUp) continue;
        for (auto* own = at->FirstUnicastAddress; own != nullptr; own = own->Next) {
            sockaddr_in address{};
            std::memcpy(&address, own->Address.lpSockaddr, sizeof address);
            wchar_t host[INET_ADDRSTRLEN] = L"";
            ::InetNtopW(AF_INET, &address.sin_addr, host, INET_ADDRSTRLEN);
            found.push_back({platform::narrow(at->FriendlyName), platform::narrow(host)});
        }
    }
    return found;
}

}  // namespace vantrel::page
