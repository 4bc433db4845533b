#include "page/own_address.h"

#include <charconv>
#include <cstdint>

namespace vantrel::page {

namespace {

struct Range {
    const char* first;
    int bits;
    int rank;
};

std::optional<std::uint32_t> numberOf(const std::string& host) {
    std::uint32_t number = 0;
    const char* at = host.data();
    const char* const end = at + host.size();
    for (int part = 0; part < 4; ++part) {
        std::uint8_t byte = 0;
        if (part > 0 && (at == end || *at++ != '.')) return std::nullopt;
        const auto [next, failure] = std::from_chars(at, end, byte);
        if (failure != std::errc{}) return std::nullopt;
        number = number << 8U | byte;
        at = next;
    }
    return at == end ? std::optional(number) : std::nullopt;
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
        for (const char* name : {"docker", "br-", "veth", "virbr", "vmnet", "vboxnet", "tun", "wg", "lxc",
                                 "podman", "vEthernet", "VMware", "VirtualBox"})
            if (address.adapter.starts_with(name)) return kOfPrograms + range.rank;
        return range.rank;
    }
    return std::nullopt;
}

}  // namespace

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
