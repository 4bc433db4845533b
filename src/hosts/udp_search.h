// A question to everyone in the network, and the answers.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantrel::hosts {

/// Who answered, and what: untrusted.
struct UdpAnswer {
    std::string host;  // numeric address, an IPv6 one with its zone: "fe80::1%eth0"
    std::string words;
};

/// A question that has been sent. Answers are collected until this goes.
class UdpSearch {
  public:
    virtual ~UdpSearch() = default;

    /// What arrived since the last call. Never waits.
    virtual std::vector<UdpAnswer> answers() = 0;
};

/// Asks on every way into the network: this machine, the broadcast address of each interface, and an IPv6
/// multicast group. Ways that are closed are left out.
struct UdpQuestion {
    int port = 0;
    std::string group;  // numeric IPv6 address
    std::string words;
};
using UdpSearches = std::function<std::unique_ptr<UdpSearch>(const UdpQuestion&)>;

/// The real one.
std::unique_ptr<UdpSearch> searchNetwork(const UdpQuestion& question);

}  // namespace vantrel::hosts
