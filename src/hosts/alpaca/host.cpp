#include "hosts/alpaca/host.h"

#include <algorithm>
#include <stdexcept>

#include "hosts/alpaca/camera.h"
#include "hosts/alpaca/discovery.h"
#include "hosts/alpaca/telescope.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::Milliseconds;

constexpr const char* kSection = "Hosts";
constexpr const char* kKey = "AlpacaDevices";
constexpr std::size_t kMostKnown = 100;
constexpr Milliseconds kSearchTime{10'000};

Json toJson(const DeviceRecord& device) {
    return {{"DeviceType", device.type},      {"UniqueID", device.uniqueId}, {"DeviceName", device.name},
            {"DeviceNumber", device.number},  {"Host", device.server.host},  {"Port", device.server.port},
            {"ServerName", device.serverName}};
}

/// Devices stored as a list in the protocol's words. What makes no sense is left out.
std::vector<DeviceRecord> devicesFrom(const std::string& text) {
    std::vector<DeviceRecord> devices;
    const Json list = parseJson(text);
    if (!list.is_array()) return devices;
    for (const Json& entry : list) {
        const auto server = parseServerAddress(textMember(entry, "Host"));
        const int port = intMember(entry, "Port", 0);
        if (!server || port < 1 || port > 65535) continue;
        for (DeviceRecord& device : devicesIn(Json::array({entry}), {server->host, port})) {
            device.serverName = textMember(entry, "ServerName");
            devices.push_back(std::move(device));
        }
    }
    return devices;
}

}  // namespace

Host::Host(Surroundings surroundings, platform::SettingsRoot& settings, platform::ClassRegistry& classes)
    : surroundings_(std::move(surroundings)), settings_(settings), classes_(classes) {
    load();
    for (const DeviceRecord& device : known_) install(device);
}

// ---- finding

std::vector<DeviceRecord> Host::search() {
    std::optional<std::vector<DeviceRecord>> found;
    const Discovery discovery(surroundings_,
                              [&found](std::vector<DeviceRecord> devices) { found = std::move(devices); });
    surroundings_.client.wait([&found] { return found.has_value(); }, kSearchTime,
                              "The search didn't end in time.");
    return std::move(*found);
}

std::vector<DeviceRecord> Host::devicesAt(const ServerAddress& server) {
    return devicesIn(surroundings_.client.get({.server = server, .path = "/management/v1/configureddevices"}),
                     server);
}

// ---- remembering

std::string Host::remember(const DeviceRecord& device) {
    std::string id = device.id();
    std::erase_if(known_, [&](const DeviceRecord& other) { return other.id() == id; });
    known_.insert(known_.begin(), device);
    if (known_.size() > kMostKnown) forget(known_.back().id());
    store();
    install(device);
    return id;
}

void Host::forget(const std::string& id) {
    std::erase_if(known_, [&](const DeviceRecord& device) { return device.id() == id; });
    classes_.uninstall(id);
    store();
}

std::vector<DeviceRecord> Host::known(const std::string& type) const {
    std::vector<DeviceRecord> devices;
    std::copy_if(known_.begin(), known_.end(), std::back_inserter(devices),
                 [&](const DeviceRecord& device) { return type.empty() || device.type == type; });
    return devices;
}

std::optional<DeviceRecord> Host::find(const std::string& id) const {
    const auto found = std::find_if(known_.begin(), known_.end(),
                                    [&](const DeviceRecord& device) { return device.id() == id; });
    return found == known_.end() ? std::nullopt : std::optional(*found);
}

/// A device was found somewhere else than last time.
void Host::noteMoved(const DeviceRecord& device) {
    const auto known = std::find_if(known_.begin(), known_.end(),
                                    [&](const DeviceRecord& other) { return other.id() == device.id(); });
    if (known == known_.end() || *known == device) return;
    *known = device;
    store();
    install(device);
}

void Host::load() {
    try {
        known_ = devicesFrom(settings_.read(kSection, kKey).value_or("[]"));
    } catch (const std::runtime_error& error) {
        surroundings_.tell("The stored Alpaca devices can't be read: " + std::string(error.what()));
    }
    if (known_.size() > kMostKnown) known_.resize(kMostKnown);
}

void Host::store() {
    Json list = Json::array();
    for (const DeviceRecord& device : known_) list.push_back(toJson(device));
    try {
        settings_.write(kSection, kKey, list.dump());
    } catch (const std::runtime_error& error) {
        surroundings_.tell("The Alpaca devices can't be stored: " + std::string(error.what()));
    }
}

// ---- using

void Host::install(const DeviceRecord& device) {
    if (device.type != "telescope") return;
    const std::string place = device.serverName.empty() ? device.server.text() : device.serverName;
    platform::AutomationClass telescope;
    telescope.create = [this, id = device.id(), device] {
        return std::make_shared<Telescope>(surroundings_, find(id).value_or(device),
                                           [this](const DeviceRecord& moved) { noteMoved(moved); });
    };
    telescope.deviceType = "Telescope";
    telescope.description = device.name + " (Alpaca, " + place + ")";
    classes_.install(device.id(), std::move(telescope));
}

std::unique_ptr<platform::CameraHardware> Host::camera(const std::string& id) {
    const auto device = find(id);
    if (!device || device->type != "camera")
        throw std::runtime_error("There is no Alpaca camera \"" + id + "\".");
    return std::make_unique<Camera>(
        surroundings_, *device, [this](const DeviceRecord& moved) { noteMoved(moved); },
        [this](const ServerAddress& server) { return wheelAt(server); });
}

std::optional<DeviceRecord> Host::wheelAt(const ServerAddress& server) {
    const auto firstOf = [&](const std::vector<DeviceRecord>& devices) -> std::optional<DeviceRecord> {
        for (const DeviceRecord& device : devices)
            if (device.type == "filterwheel" && device.server == server) return device;
        return std::nullopt;
    };
    if (auto wheel = firstOf(known_)) return wheel;
    try {
        return firstOf(devicesAt(server));
    } catch (const UnknownMember&) {
        return std::nullopt;  // it has no list
    }
}

}  // namespace vantrel::hosts::alpaca
