#include "devices/maxim_camera.h"

#include <algorithm>

#include "engine/camera_binning.h"
#include "engine/waiting.h"
#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;
using engine::WaitSeconds;

namespace {

constexpr int kExposureFailed = 32768;
constexpr const char* kDisconnectMaxIm = "Module modComponents Sub DisconnectMaxImCamera";
constexpr const char* kShutdownLet = "Module modComponents Property Let camDisableAutoShutdown";
constexpr const char* kTakePicture = "Module modComponents sub TakePicture";

}  // namespace

const MaxImLike kMaxImProgram{"MaxIm.CCDCamera", "MaxIm DL", &ImagingObjects::maxImCamera, true};
const MaxImLike kBuiltInProgram{"Vantrel.CCDCamera", "the built-in camera program",
                                &ImagingObjects::builtInCamera, false};

bool MaxImCamera::isLinked() { return camera()->get("LinkEnabled").toBool(); }

void MaxImCamera::link(bool value) { camera()->put("LinkEnabled", value); }

void MaxImCamera::renew() {
    tools_.programs.*program_.camera = tools_.services.automation.create(program_.cameraClass);
}

bool MaxImCamera::mayHoldCamera() const {
    return program_.hasWindows ? tools_.windows.FindMaxImMainWindow() != 0
                               : tools_.programs.*program_.camera != nullptr;
}

void MaxImCamera::letGo() {
    renew();
    tools_.attempt(kDisconnectMaxIm, [&] {
        if (!holdsCamera()) return;
        // Only who holds the link can end it.
        if (program_.hasWindows) camera()->put("LinkEnabled", true);
        camera()->put("LinkEnabled", false);
    });
    (tools_.programs.*program_.camera).reset();
}

bool MaxImCamera::holdsCamera() {
    return program_.hasWindows ? tools_.windows.MaxImCameraIsConnected() : isLinked();
}

void MaxImCamera::setDisableAutoShutdown(bool value) {
    tools_.attempt(kShutdownLet, [&] { camera()->put("DisableAutoShutdown", value); });
}

void MaxImCamera::save(const std::string& path) { camera()->call("SaveImage", {path}); }

void MaxImCamera::expose(double seconds) {
    const int chosenFilter = filter();
    camera()->put("BinX", 1);
    camera()->put("BinY", 1);
    camera()->call("SetFullFrame");
    const Value greatestX = camera()->get("MaxBinX"), greatestY = camera()->get("MaxBinY");
    if (!program_.hasWindows)
        engine::limitBinning(tools_.services.settings, tools_.services.log,
                             std::min(greatestX.toInt(), greatestY.toInt()));
    const int bin = tools_.binning();
    camera()->put("BinX", bin);
    camera()->put("BinY", bin);
    tools_.bringProgramForward();
    if (!tools_.stopped()) TakePicture(seconds, chosenFilter);
}

/// Programs with windows keep it in their camera dialog as well.
int MaxImCamera::filter() {
    if (program_.hasWindows) return tools_.windows.GetCameraFilter();
    return toInt16(camera()->get("Filter").toDouble());
}

void MaxImCamera::TakePicture(double seconds, int filter) {
    tools_.services.state.CameraFailed = false;
    if (tools_.services.state.StopRequested) return;
    try {
        const bool light = seconds >= 0;
        if (!light) seconds = -seconds;
        if (tools_.PostExposureDelay > 0) WaitSeconds(tools_.services.loop, tools_.PostExposureDelay);
        startExposure(seconds, light, filter);
        awaitImage(seconds);
    } catch (...) {
        reportTakePicture(currentError());
    }
}

void MaxImCamera::startExposure(double seconds, bool light, int filter) {
    bool started = false;
    try {
        started = camera()->call("Expose", {seconds, light ? 1 : 0, filter}).toBool();
    } catch (...) {
        if (!program_.hasWindows) throw;  // its reasons are our own
    }
    if (!started)
        throw OperationError(kExposureFailed, program_.cameraClass,
                             std::string(program_.name) + " Failed to start the exposure");
}

void MaxImCamera::awaitImage(double seconds) {
    const double grace = tools_.graceDelay();
    const auto ready = [&] { return camera()->get("ImageReady").toBool(); };
    for (int polls = 0; seconds + kExposureTimeOut - polls * kExposurePoll > 0; ++polls) {
        if (ready()) return;
        WaitSeconds(tools_.services.loop, kExposurePoll);
        if (tools_.services.state.StopRequested) return;
    }
    WaitSeconds(tools_.services.loop, grace > 0 ? grace : kDefaultGrace);
    if (!ready())
        throw OperationError(
            kExposureFailed, program_.cameraClass,
            std::string("Exposure by ") + program_.name + " failed after being successfully started.");
}

void MaxImCamera::reportTakePicture(const OperationError& error) {
    const std::string text =
        error.number() == kExposureAborted ? "Exposure Aborted" : errorReport(error, kTakePicture);
    tools_.services.messages.ShowPopupMessage(text, kMessageSeconds);
    tools_.services.log.AddToLog(text);
    tools_.services.state.CameraFailed = true;
}

}  // namespace vantrel::devices
