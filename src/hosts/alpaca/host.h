// The Alpaca devices of the network as the program's own: found or typed in, remembered, and put to use.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/alpaca/device_record.h"
#include "hosts/alpaca/surroundings.h"
#include "platform/camera_hardware.h"
#include "platform/class_registry.h"
#include "platform/settings_root.h"

namespace vantrel::hosts::alpaca {

/// Devices are known by their DeviceRecord::id(). A telescope is an automation class of that name as soon as
/// it is remembered, so that a stored choice means something before its server answers; making an object of
/// it asks nobody.
class Host {
  public:
    /// Installs the telescopes that are remembered. Must outlive all its devices.
    Host(Surroundings surroundings, platform::SettingsRoot& settings, platform::ClassRegistry& classes);

    /// Everything that answers in the network. Waits some seconds; throws GivenUp.
    std::vector<DeviceRecord> search();

    /// What a server that doesn't answer to searches has. Waits; throws with a sentence when it has no list,
    /// as some haven't: then a device's type and number have to be typed.
    std::vector<DeviceRecord> devicesAt(const ServerAddress& server);

    /// Makes a device known. Returns its ID.
    std::string remember(const DeviceRecord& device);
    void forget(const std::string& id);

    /// Those that are known, of one type ("camera") or all.
    std::vector<DeviceRecord> known(const std::string& type = {}) const;

    /// A known camera. It takes its filters from the filter wheel that is known of the same server, or from
    /// the first that the server has. Throws std::runtime_error when there is no such camera.
    std::unique_ptr<platform::CameraHardware> camera(const std::string& id);

  private:
    std::optional<DeviceRecord> find(const std::string& id) const;
    std::optional<DeviceRecord> wheelAt(const ServerAddress& server);
    void noteMoved(const DeviceRecord& device);
    void install(const DeviceRecord& device);
    void load();
    void store();

    Surroundings surroundings_;
    platform::SettingsRoot& settings_;
    platform::ClassRegistry& classes_;
    std::vector<DeviceRecord> known_;
};

}  // namespace vantrel::hosts::alpaca
