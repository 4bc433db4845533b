#include "devices/camera_link.h"

#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;

namespace {

constexpr const char* kLinkGet = "Module modComponents Property Get camLinkEnabled";
constexpr const char* kLinkLet = "Module modComponents Property Let camLinkEnabled";
constexpr const char* kAcquire = "Module modComponents Sub AcquireImage";
constexpr const char* kSave = "modUtilities Sub SaveImageToFile";

}  // namespace

CameraLink::CameraLink(const LinkServices& services, ImagingObjects& programs, ImagingWindows& windows,
                       const CameraFields& fields)
    : tools_{services, programs, windows, fields, PostExposureDelay_},
      maxIm_(tools_, kMaxImProgram),
      builtIn_(tools_, kBuiltInProgram),
      ccdSoft_(tools_) {}

void CameraLink::AcquireImage(double seconds) {
    if (tools_.services.state.AppUnloading) return;
    setCamLinkEnabled(true);
    if (!camLinkEnabled()) {
        const std::string text =
            std::string("Failed to start camera!") + kCrLf + "Verify camera model in Imaging Software";
        tools_.services.messages.ShowPopupMessage(text, tools_.services.messages.displaySeconds());
        tools_.services.log.AddToLog(text);
        return;
    }
    try {
        if (CameraProgram* program = inUse()) program->expose(seconds);
    } catch (...) {
        // The camera refused its binning or frame: there is no image.
        tools_.report(currentError(), kAcquire);
        tools_.services.state.CameraFailed = true;
    }
}

void CameraLink::SaveImageToFile(const std::string& fileName) {
    try {
        required().save(tools_.services.settings.GetSetting("PolarAlign", "ImagePath", "C:") + "\\" +
                        fileName);
        tools_.services.state.LastSavedImage = fileName;
        tools_.services.loop.yield();
    } catch (...) {
        tools_.services.log.AddToLog(sourcedErrorReport(currentError(), kSave));
    }
}

bool CameraLink::camLinkEnabled() {
    bool enabled = false;
    tools_.attempt(kLinkGet, [&] { enabled = required().isLinked(); });
    return enabled;
}

void CameraLink::setCamLinkEnabled(bool value) {
    tools_.attempt(kLinkLet, [&] {
        CameraProgram& program = required();
        if (program.wantsCameraFreed(value)) freeCameraFor(program);
        link(program, value);
    });
}

/// A program that went or hung may be back, but answers a new object only.
void CameraLink::link(CameraProgram& program, bool value) {
    try {
        program.link(value);
    } catch (const OperationError& error) {
        if (!value || !isGone(error)) throw;
        program.renew();
        program.link(value);
    }
}

void CameraLink::freeCameraFor(const CameraProgram& program) {
    for (CameraProgram* other : {static_cast<CameraProgram*>(&ccdSoft_), static_cast<CameraProgram*>(&maxIm_),
                                 static_cast<CameraProgram*>(&builtIn_)})
        if (other != &program && other->mayHoldCamera()) other->letGo();
}

void CameraLink::setCamDisableAutoShutdown(bool value) {
    if (CameraProgram* program = inUse()) program->setDisableAutoShutdown(value);
}

void CameraLink::abortExposure() {
    if (CameraProgram* program = inUse()) program->abortSilently();
}

CameraProgram* CameraLink::inUse() {
    const ImagingObjects& programs = tools_.programs;
    if (programs.usesMaxIm()) return &maxIm_;
    if (programs.usesCCDSoft()) return &ccdSoft_;
    return programs.usesBuiltIn() ? &builtIn_ : nullptr;
}

CameraProgram& CameraLink::required() {
    CameraProgram* program = inUse();
    if (program == nullptr) throw noFailure();
    return *program;
}

}  // namespace vantrel::devices
