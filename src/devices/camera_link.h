// The camera, reached through the imaging program that owns it: linking, exposing, saving.
//
// AcquireImage is the one way to an exposure. The camera stays linked afterwards and the image open in the
// imaging program. Nothing here throws: failures are logged and shown, and exposures set CameraFailed.
#pragma once

#include <string>

#include "devices/ccdsoft_camera.h"
#include "devices/maxim_camera.h"

namespace vantrel::devices {

class CameraLink : public engine::CameraPort {
  public:
    CameraLink(const LinkServices& services, ImagingObjects& programs, ImagingWindows& windows,
               const CameraFields& fields);
    CameraLink(const CameraLink&) = delete;
    CameraLink& operator=(const CameraLink&) = delete;

    /// Links the camera, sets binning and full frame, exposes for so many seconds (negative: a dark frame
    /// with MaxIm DL) and waits for the image. A stop that was asked for before leaves the exposure
    /// out: a new beginning forgets an old one. Does nothing while the program ends.
    void AcquireImage(double seconds) override;

    /// Saves the open image in the image folder, under the name as it is given.
    void SaveImageToFile(const std::string& fileName) override;

    /// Whether the camera is linked in the program in use.
    bool camLinkEnabled();
    /// Links or unlinks it; other programs have to let go of it first.
    void setCamLinkEnabled(bool value);
    /// Whether the program in use keeps running when it loses its last client.
    void setCamDisableAutoShutdown(bool value);
    /// Ends an exposure of the program in use, silently: for the shutdown.
    void abortExposure();

  private:
    CameraProgram* inUse();
    CameraProgram& required();
    static void link(CameraProgram& program, bool value);
    void freeCameraFor(const CameraProgram& program);

    double PostExposureDelay_ = 0;  // seconds
    CameraTools tools_;
    MaxImCamera maxIm_;
    MaxImCamera builtIn_;
    CCDSoftCamera ccdSoft_;
};

}  // namespace vantrel::devices
