// INDI as a host of automation classes: what a front holds.
//
//   IndiHost indi(surroundings, options, setupDialog);
//   indi.search(...)                 what the servers have, for the chooser
//   indi.install(registry, progId)   one of the mounts as a class of automation objects
//   indi.camera(progId)              one of the cameras for the camera program
//
// A device is what its ProgID says, whether its server answers or not: nothing but search() and connecting
// ever contacts one.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/indi/camera.h"
#include "hosts/indi/directory.h"
#include "hosts/indi/mount.h"
#include "hosts/indi/servers.h"
#include "platform/class_registry.h"

namespace vantrel::hosts::indi {

/// What the front knows and shows of mounts.
struct MountSeams {
    std::function<MountOptions(const DeviceId& mount)> options;
    std::function<void(const DeviceId& mount)> setupDialog;
};

class IndiHost {
  public:
    IndiHost(Surroundings surroundings, MountSeams seams)
        : servers_(std::move(surroundings)), seams_(std::move(seams)) {}

    Search search(const std::vector<ServerAddress>& addresses) { return searchServers(servers_, addresses); }

    /// False when the ProgID names no INDI device.
    bool install(platform::ClassRegistry& registry, const std::string& progId);

    /// Throws std::runtime_error when the ProgID names no INDI device. The same for everybody who asks.
    std::shared_ptr<platform::CameraHardware> camera(const std::string& progId);

  private:
    std::shared_ptr<Mount> mount(const DeviceId& id);

    Servers servers_;
    MountSeams seams_;
    // Hardware stays when its automation objects are released.
    std::map<DeviceId, std::shared_ptr<Mount>> mounts_;
    std::map<DeviceId, std::shared_ptr<Camera>> cameras_;
};

}  // namespace vantrel::hosts::indi
