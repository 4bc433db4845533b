#include "hosts/indi/device_id.h"

#include "hosts/server_text.h"
#include "platform/text.h"

namespace vantrel::hosts::indi {

std::optional<ServerAddress> readServerAddress(std::string_view text) {
    const std::string address = platform::trimmed(text);
    std::string_view host = address, port;
    const bool numeric6 = host.starts_with('[');
    const auto end = numeric6 ? host.find(']') : host.rfind(':');
    if (numeric6) {
        if (end == host.npos) return std::nullopt;
        port = host.substr(end + 1);
        host = host.substr(1, end - 1);
        if (!port.empty() && !port.starts_with(':')) return std::nullopt;
    } else if (end != host.npos) {
        port = host.substr(end);
        host = host.substr(0, end);
    }
    if (host.empty() || host.find_first_of("/ \t[]") != host.npos) return std::nullopt;
    if (!numeric6 && host.find(':') != host.npos) return std::nullopt;
    const auto number = port.empty() ? std::optional(kDefaultPort) : parsePort(port.substr(1));
    if (!number) return std::nullopt;
    return ServerAddress{std::string(host), *number};
}

std::optional<DeviceId> readProgId(std::string_view progId) {
    constexpr std::string_view kKind = "Indi:";
    if (!platform::equalIgnoringCase(progId.substr(0, kKind.size()), kKind)) return std::nullopt;
    progId.remove_prefix(kKind.size());
    const auto slash = progId.find('/');
    if (slash == progId.npos || slash + 1 == progId.size()) return std::nullopt;
    const auto server = readServerAddress(progId.substr(0, slash));
    if (!server) return std::nullopt;
    return DeviceId{*server, std::string(progId.substr(slash + 1))};
}

}  // namespace vantrel::hosts::indi
