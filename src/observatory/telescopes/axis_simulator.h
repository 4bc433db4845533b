// The driver class "AxisSimulator.Telescope": a mount with a misaligned polar axis and a camera on it.
#pragma once

#include "observatory/telescopes/camera.h"
#include "observatory/telescopes/telescope_driver.h"
#include "platform/background.h"
#include "platform/folder_map.h"

namespace vantrel::observatory {

struct AxisSimulatorDevice : TelescopeDevice {
    AxisSimulatorDevice(platform::EventLoop& eventLoop, platform::Background& beside, NoiseSource& noise,
                        sky::CatalogSource catalog)
        : TelescopeDevice(eventLoop, noise), background(beside), camera(mount, noise, std::move(catalog)) {}

    platform::Background& background;
    Camera camera;
    imaging::Picture picture;  // the last one; no pixels before the first
    std::function<void(const imaging::Picture&)> onPicture;
    bool exposing = false;
};

/// Beside a mount's members: the axis error ("PolarAzimuthError", "PolarElevationError" and the adjusters
/// that change them), mechanical faults, the optics and the air as settings, "Expose", which takes the
/// exposure's time, "ImageArray" and "SaveImageToFile"(full path), which replaces a file that is there and
/// makes no folders.
class AxisSimulator : public TelescopeDriver {
  public:
    /// Image paths go through the folder map.
    AxisSimulator(const DriverIdentity& identity, std::shared_ptr<AxisSimulatorDevice> device,
                  SetupDialog setupDialog, const platform::FolderMap& folders);

  private:
    void addAxis();
    void addFaults();
    void addOptics();
    void addSensor();
    void addPictures();
    void addPixelCount(const std::string& name, double& pixels);
    /// A method that turns an adjuster: changes the error by its argument, arc-minutes.
    void addAdjuster(const std::string& name, double& error, const Range& range);
    void expose();
    void save(const std::string& path) const;

    DriverIdentity identity_;
    std::shared_ptr<AxisSimulatorDevice> device_;
    const platform::FolderMap& folders_;
};

}  // namespace vantrel::observatory
