// Nights with a real mount and camera behind a server, which fails in every way that servers and cables do.
#pragma once

#include "faults/night.h"

namespace vantrel::faults {

/// One thing that goes wrong: from the beginning of the activity on, or at one of the operator's turns.
struct NetworkFault {
    std::string name;
    std::function<void()> strike;
    long turn = 0;
};

/// The servers' side of a night. `repair` makes all well again.
class NetworkDevices {
  public:
    virtual ~NetworkDevices() = default;

    /// Every command or question that came since the last call, once.
    virtual std::vector<std::string> takeRequests() = 0;
    /// What may happen to one of them.
    virtual std::vector<NetworkFault> faultsOf(const std::string& request) = 0;
    /// What may happen to the servers at any moment.
    virtual std::vector<NetworkFault> accidents() = 0;
    virtual void repair() = 0;
    virtual bool mountSlews() const = 0;
};

struct NetworkEquipment {
    Equipment equipment;
    std::function<std::shared_ptr<NetworkDevices>(const Workshop& workshop)> bring;
};

NetworkEquipment indiEquipment();
NetworkEquipment alpacaEquipment();

}  // namespace vantrel::faults
