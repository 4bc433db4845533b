// What the Alpaca devices stand on.
#pragma once

#include <functional>
#include <string>

#include "hosts/alpaca/client.h"
#include "hosts/equinox_conversion.h"
#include "hosts/udp_search.h"
#include "platform/background.h"
#include "platform/event_loop.h"

namespace vantrel::hosts::alpaca {

/// Everybody else's; outlives the devices.
struct Surroundings {
    platform::EventLoop& loop;
    Client& client;
    platform::Background& background;
    UdpSearches search;
    std::function<int()> discoveryPort;  // the setting
    EquinoxConversion equinox;
    std::function<bool(const std::string& address)> openPage;  // in the browser; false when that failed
    std::function<void(const std::string& line)> tell;         // a line for the log
};

}  // namespace vantrel::hosts::alpaca
