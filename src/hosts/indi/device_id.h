// How a device of an INDI server is named: "Indi:host:port/Device".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hosts/byte_stream.h"

namespace vantrel::hosts::indi {

inline constexpr int kDefaultPort = 7624;

struct DeviceId {
    ServerAddress server;
    std::string device;

    std::string progId() const { return "Indi:" + server.text() + "/" + device; }
    auto operator<=>(const DeviceId&) const = default;  // NOLINT(modernize-use-nullptr): no pointer is here
};

/// "host", "host:port", "[numeric address]:port".
std::optional<ServerAddress> readServerAddress(std::string_view text);

std::optional<DeviceId> readProgId(std::string_view progId);

}  // namespace vantrel::hosts::indi
