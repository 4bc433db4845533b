// A device at a server, as it is listed, chosen and remembered.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/alpaca/json.h"
#include "hosts/byte_stream.h"

namespace vantrel::hosts::alpaca {

struct DeviceRecord {
    std::string type;      // lower case: "telescope", "camera", "filterwheel"
    std::string uniqueId;  // empty where the server has none
    std::string name;
    ServerAddress server;  // where it was last
    int number = 0;        // the server's number for it then
    std::string serverName = {};

    /// Its name in the program: "Alpaca:UniqueID/telescope", and without a unique ID
    /// "Alpaca:host:port/telescope/0".
    std::string id() const;

    bool operator==(const DeviceRecord&) const = default;
};

/// The devices in a server's list (configureddevices), as far as they make sense.
std::vector<DeviceRecord> devicesIn(const Json& list, const ServerAddress& server);

/// "host", "host:port", "[IPv6 address]:port", perhaps with "http://" before it; 11111 is the port that most
/// servers have. Nothing when it is no address.
std::optional<ServerAddress> parseServerAddress(std::string_view text);

/// A device of a server that has no list of them, as it is typed: "host:port/telescope/0". Nothing when it
/// is none.
std::optional<DeviceRecord> parseDevice(std::string_view text);

}  // namespace vantrel::hosts::alpaca
