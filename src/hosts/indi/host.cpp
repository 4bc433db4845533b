#include "hosts/indi/host.h"

#include <stdexcept>

#include "hosts/indi/telescope.h"

namespace vantrel::hosts::indi {

bool IndiHost::install(platform::ClassRegistry& registry, const std::string& progId) {
    const auto id = readProgId(progId);
    if (!id) return false;
    registry.install(progId, {.create =
                                  [this, id = *id, progId] {
                                      return std::make_shared<Telescope>(progId, mount(id), [this, id] {
                                          if (seams_.setupDialog) seams_.setupDialog(id);
                                      });
                                  },
                              .serverPath = {},
                              .deviceType = "Telescope",
                              .description = id->device + " (INDI, " + id->server.text() + ")"});
    return true;
}

std::shared_ptr<platform::CameraHardware> IndiHost::camera(const std::string& progId) {
    const auto id = readProgId(progId);
    if (!id) throw std::runtime_error("\"" + progId + "\" is no camera at an INDI server");
    auto& camera = cameras_[*id];
    if (!camera)
        camera = std::make_shared<Camera>(servers_.surroundings(), servers_.client(id->server), id->device);
    return camera;
}

std::shared_ptr<Mount> IndiHost::mount(const DeviceId& id) {
    auto& mount = mounts_[id];
    if (!mount)
        mount = std::make_shared<Mount>(
            servers_.surroundings(), servers_.client(id.server), id.device,
            [this, id] { return seams_.options ? seams_.options(id) : MountOptions(); });
    return mount;
}

}  // namespace vantrel::hosts::indi
