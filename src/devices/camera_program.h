// One imaging program as the camera link drives it. Every kind of program has its own way of linking the
// camera, of exposing and of saving; the link knows none of them.
#pragma once

#include <string>

#include "devices/imaging_windows.h"
#include "devices/link_services.h"
#include "platform/controls.h"

namespace vantrel::devices {

inline constexpr double kExposurePoll = 0.1;    // seconds between two looks at an exposure
inline constexpr double kExposureTimeOut = 60;  // seconds beyond the exposure time
inline constexpr double kDefaultGrace = 2;      // seconds
inline constexpr int kExposureAborted = 65535;  // the imaging program's own abort

/// A report without a failure: the image never came, or no known program is in use.
inline platform::OperationError noFailure() { return {0, "", ""}; }

/// The fields of the main window that exposures depend on.
struct CameraFields {
    const platform::TextBox& txtPostExpDelay;         // seconds
    const platform::CheckBox& chkUseCCDSoftSubFrame;  // sub-frame of CCDSoft
};

/// What the programs work with.
struct CameraTools {
    LinkServices services;
    ImagingObjects& programs;
    ImagingWindows& windows;
    CameraFields fields;
    /// Seconds that CCDSoft's last exposure was to wait for its image; MaxIm DL then waits as
    /// long before it begins.
    double& PostExposureDelay;

    /// Shown and logged.
    void report(const platform::OperationError& error, const char* label) const;
    /// Runs the body; what it throws is reported.
    template <typename Body>
    void attempt(const char* label, Body&& body) const {
        try {
            body();
        } catch (...) {
            report(platform::currentError(), label);
        }
    }
    /// As configured.
    std::int16_t binning() const;
    /// Compared as a text, so that a minus sign or an empty field means none.
    double graceDelay() const;
    void bringProgramForward() const;
    bool stopped() const { return services.state.StopRequested || services.state.AppUnloading; }
};

class CameraProgram {
  public:
    virtual ~CameraProgram() = default;

    /// Both throw OperationError.
    virtual bool isLinked() = 0;
    virtual void link(bool value) = 0;
    /// Takes an object of its own of the program anew. Throws OperationError.
    virtual void renew() = 0;

    /// Whether others have to let go of the camera before it is linked (true) or unlinked (false).
    virtual bool wantsCameraFreed(bool linking) const = 0;
    /// It is running, so it may hold the camera.
    virtual bool mayHoldCamera() const = 0;
    /// Makes it let go, through an object of its own; reports what goes wrong. Throws when there is no
    /// object.
    virtual void letGo() = 0;

    /// Bins, exposes and waits for the image. Sets CameraFailed; throws when the camera refuses its binning
    /// or frame.
    virtual void expose(double seconds) = 0;
    /// Throws OperationError.
    virtual void save(const std::string& path) = 0;

    /// Ends an exposure, silently: for the shutdown. Programs without such a command do nothing.
    virtual void abortSilently() {}
    /// Whether the program keeps running when it loses its last client.
    virtual void setDisableAutoShutdown(bool /*value*/) {}
};

/// The object, kept alive while it is used: events that run meanwhile may release it. Failure 91 for none.
platform::ObjectRef held(const platform::ObjectRef& object);

}  // namespace vantrel::devices
