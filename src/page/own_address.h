// Which of this machine's addresses a page for the local network is opened at.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantrel::page {

struct OwnAddress {
    std::string adapter;
    std::string host;  // numeric, IPv4
};

/// Of the interfaces that are up.
std::vector<OwnAddress> ownAddresses();

/// The likeliest to be reached from a telephone in the same network: one that the world can't reach, of a
/// real network before those that only programs of this machine share. Nothing when there is none.
std::optional<std::string> localAddress(const std::vector<OwnAddress>& addresses);

}  // namespace vantrel::page
