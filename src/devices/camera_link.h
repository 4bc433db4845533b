// The camera, reached through the imaging program that owns it: linking, exposing, saving.
//
// AcquireImage is the one way to an exposure. The camera stays linked afterwards and the image open in the
// imaging program. Nothing here throws: failures are logged and shown, and exposures set CameraFailed.
#pragma once

#include <optional>
#include <string>

#include "devices/imaging_programs.h"
#include "devices/imaging_windows.h"
#include "devices/services.h"
#include "platform/controls.h"

namespace vantrel::devices {

/// The fields of the main window that exposures depend on.
struct CameraFields {
    const platform::TextBox& txtPostExpDelay;         // seconds
    const platform::CheckBox& chkUseCCDSoftSubFrame;  // sub-frame of the second program
};

class CameraLink : public engine::CameraPort {
  public:
    CameraLink(const Services& services, ImagingPrograms& programs, ImagingWindows& windows,
               const CameraFields& fields);

    /// Links the camera, sets binning and full frame, exposes for so many seconds (negative: a dark frame
    /// with the first program) and waits for the image. A stop that was asked for before leaves the exposure
    /// out: whoever begins something new forgets an old one. Does nothing while the program ends.
    void AcquireImage(double seconds) override;

    /// Saves the open image in the image folder, under the name as it is given.
    void SaveImageToFile(const std::string& fileName) override;

    /// Whether the camera is linked in the program in use.
    bool camLinkEnabled();
    /// Links or unlinks it; the other program has to let go of it first.
    void setCamLinkEnabled(bool value);
    /// Whether the first program keeps running when it loses its last client.
    void setCamDisableAutoShutdown(bool value);

    /// Drop the link and the object of the program, if it is the one in use.
    void DisconnectMaxImCamera();
    void DisconnectCCDSoftCamera();

    /// The second program's way of exposing; false for the first.
    bool CCDSoftIsAsynchronous();
    void setCCDSoftIsAsynchronous(bool value);

    /// Takes hold of the image just exposed with the second program.
    void AttachCCDSoftImageToActiveImager();

    /// Ends an exposure of the second program, silently: for the shutdown.
    void abortCCDSoftExposure();

    /// Text of the last camera message.
    const std::string& CameraMessage() const { return CameraMessage_; }

  private:
    class ProgramForTheMoment;

    void exposeWithMaxIm(double seconds);
    void exposeWithCCDSoft(double seconds);
    void bringProgramForward();
    std::int16_t binning();
    double graceDelay() const;

    void TakePicture(double seconds);
    void startMaxImExposure(double seconds, bool light);
    void awaitMaxImImage(double seconds);
    void reportTakePicture(const platform::OperationError& error);

    void TakeCCDSoftImage(double delay, double seconds, bool light);
    bool ccdSoftImageIsTaken(double delay, double seconds, bool light);
    std::optional<double> awaitCCDSoftExposure(double seconds);
    void reportTakeCCDSoftImage(const platform::OperationError& error);
    void setUpCCDSoft();

    void freeCameraFromCCDSoft();
    void freeCameraFromMaxIm();

    template <typename Body>
    void attempt(const char* label, Body&& body);
    void report(const platform::OperationError& error, const char* label);

    platform::ObjectRef maxIm();
    platform::ObjectRef ccdSoft();

    Services services_;
    ImagingPrograms& programs_;
    ImagingWindows& windows_;
    CameraFields fields_;

    std::int16_t CameraFilter_ = 0;
    double PostExposureDelay_ = 0;  // seconds
    std::string CameraMessage_;
};

}  // namespace vantrel::devices
