#include "hosts/alpaca/device_record.h"

#include <algorithm>

#include "hosts/server_text.h"
#include "platform/text.h"

namespace vantrel::hosts::alpaca {

namespace {

constexpr std::size_t kMostDevices = 200;  // of one server
constexpr std::size_t kLongestId = 100;
constexpr std::size_t kLongestHost = 253;  // RFC 1035
constexpr int kUsualPort = 11111;

/// What can be a part of a device's name in the program and the settings.
bool isUsableId(const std::string& id) {
    return !id.empty() && id.size() <= kLongestId &&
           std::all_of(id.begin(), id.end(), [](char c) { return c > ' ' && c <= '~' && c != '/'; });
}

bool isHost(std::string_view text) {
    return !text.empty() && text.size() <= kLongestHost && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
               c == '-' || c == '_';
    });
}

bool isType(const std::string& text) {
    return !text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

/// An IPv6 address with or without its zone.
bool isSixAddress(std::string_view text) {
    const auto zone = text.find('%');
    const std::string_view address = text.substr(0, zone);
    return std::count(address.begin(), address.end(), ':') >= 2 &&
           address.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos &&
           (zone == std::string_view::npos || isHost(text.substr(zone + 1)));
}

}  // namespace

std::string DeviceRecord::id() const {
    if (!uniqueId.empty()) return "Alpaca:" + uniqueId + "/" + type;
    return "Alpaca:" + server.text() + "/" + type + "/" + std::to_string(number);
}

std::vector<DeviceRecord> devicesIn(const Json& list, const ServerAddress& server) {
    std::vector<DeviceRecord> devices;
    if (!list.is_array()) return devices;
    for (const Json& entry : list) {
        if (devices.size() == kMostDevices) break;
        DeviceRecord device;
        device.type = platform::toLower(textMember(entry, "DeviceType"));
        device.name = textMember(entry, "DeviceName");
        device.uniqueId = textMember(entry, "UniqueID");
        device.number = intMember(entry, "DeviceNumber", -1);
        device.server = server;
        if (!isType(device.type) || device.number < 0) continue;
        if (!isUsableId(device.uniqueId)) device.uniqueId.clear();
        if (device.name.empty()) device.name = device.type + " " + std::to_string(device.number);
        devices.push_back(std::move(device));
    }
    return devices;
}

std::optional<ServerAddress> parseServerAddress(std::string_view text) {
    std::string trimmed = platform::trimmed(text);
    std::string_view rest = trimmed;
    if (platform::toLower(rest).starts_with("http://")) rest.remove_prefix(7);
    if (rest.ends_with('/')) rest.remove_suffix(1);
    std::string_view host = rest;
    std::string_view port;
    if (rest.starts_with('[')) {
        const auto end = rest.find(']');
        if (end == std::string_view::npos) return std::nullopt;
        host = rest.substr(1, end - 1);
        port = rest.substr(end + 1);
        if (!isSixAddress(host) || (!port.empty() && port.front() != ':')) return std::nullopt;
        if (!port.empty()) port.remove_prefix(1);
        if (port.empty() && rest.ends_with(':')) return std::nullopt;
    } else if (isSixAddress(rest)) {
        return ServerAddress{std::string(rest), kUsualPort};
    } else if (const auto colon = rest.find(':'); colon != std::string_view::npos) {
        host = rest.substr(0, colon);
        port = rest.substr(colon + 1);
        if (port.empty()) return std::nullopt;
    }
    if (!isHost(host) && !isSixAddress(host)) return std::nullopt;
    const auto number = port.empty() ? std::optional<int>(kUsualPort) : parsePort(port);
    if (!number) return std::nullopt;
    return ServerAddress{std::string(host), *number};
}

std::optional<DeviceRecord> parseDevice(std::string_view text) {
    const auto numberAt = text.rfind('/');
    const auto typeAt = numberAt == std::string_view::npos ? numberAt : text.rfind('/', numberAt - 1);
    if (typeAt == std::string_view::npos || typeAt == 0 || numberAt == 0) return std::nullopt;
    const auto server = parseServerAddress(text.substr(0, typeAt));
    const std::string type = platform::toLower(text.substr(typeAt + 1, numberAt - typeAt - 1));
    const std::string number(text.substr(numberAt + 1));
    if (!server || number.empty() || number.find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    const auto devices = devicesIn(
        Json::array(
            {{{"DeviceType", type}, {"DeviceNumber", static_cast<int>(std::stoul(number.substr(0, 6)))}}}),
        *server);
    return devices.empty() ? std::nullopt : std::optional(devices.front());
}

}  // namespace vantrel::hosts::alpaca
