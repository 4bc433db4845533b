// Looks for Alpaca servers in the network and asks them which devices they have.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "hosts/alpaca/device_record.h"
#include "hosts/alpaca/surroundings.h"

namespace vantrel::hosts::alpaca {

inline constexpr int kDiscoveryPort = 32227;

/// The port in a server's answer to the question; nothing when it is no such answer.
std::optional<int> portIn(const std::string& answer);

/// One search. Servers have 1.5 s to answer and then some seconds to list their devices.
class Discovery {
  public:
    using Found = std::function<void(std::vector<DeviceRecord>)>;

    /// `found` hears of all devices at the end. With a wanted ID (see DeviceRecord::id) the search ends as
    /// soon as that device was found. Given up when this goes; `found` may let go of it.
    Discovery(const Surroundings& surroundings, Found found, std::string wantedId = {});

  private:
    void tick();
    void listen();
    void askForDevices(const ServerAddress& server);
    void note(const ServerAddress& server, const std::string& serverName, std::vector<DeviceRecord> devices);
    bool isComplete() const;
    void end();

    const Surroundings& surroundings_;
    Found found_;
    std::string wantedId_;
    platform::Milliseconds start_;
    std::unique_ptr<UdpSearch> search_;
    std::vector<ServerAddress> servers_;
    std::vector<DeviceRecord> devices_;
    int waitingFor_ = 0;  // lists of devices
    std::vector<HttpExchange> exchanges_;
    platform::TimerHandle timer_;
};

}  // namespace vantrel::hosts::alpaca
