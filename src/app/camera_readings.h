// What the camera in use says of its gain, its offset and its cooling, in the window of the devices.
#pragma once

#include <functional>

#include "app/frm_devices.h"
#include "platform/camera_hardware.h"

namespace vantrel::app {

class CameraReadings {
  public:
    /// The camera may be left out.
    CameraReadings(frmDevices& window, std::function<const platform::CameraHardware&()> camera);

    /// Shows what it says by now, if the window is open. What the camera hasn't got is out of reach.
    void show();

  private:
    frmDevices& window_;
    std::function<const platform::CameraHardware&()> camera_;
    bool opened_ = false;
    platform::Subscription opening_;
};

}  // namespace vantrel::app
