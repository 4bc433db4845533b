// Which mounts and cameras INDI servers have.
#pragma once

#include <string>
#include <vector>

#include "hosts/indi/device_id.h"
#include "hosts/indi/servers.h"

namespace vantrel::hosts::indi {

struct FoundDevice {
    DeviceId id;
    bool isMount = false;
    bool isCamera = false;
};

struct Search {
    std::vector<FoundDevice> devices;   // mounts and cameras only
    std::vector<std::string> problems;  // of servers that gave none, for the operator
};

/// Asks all servers at once, and waits until they have told what they have: a second or two at most. A server
/// of this machine that doesn't run costs no time.
Search searchServers(Servers& servers, const std::vector<ServerAddress>& addresses);

}  // namespace vantrel::hosts::indi
