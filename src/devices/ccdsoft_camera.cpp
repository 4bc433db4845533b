#include "devices/ccdsoft_camera.h"

#include "engine/waiting.h"
#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;
using engine::WaitSeconds;

namespace {

constexpr const char* kDisconnectCCDSoft = "Module modComponents Sub DisconnectCCDSoftCamera";
constexpr const char* kAttach = "Module modComponents Sub AttachCCDSoftImageToActiveImager";
constexpr const char* kAsynchronousGet = "modComponents Property Get CCDSoftIsAsynchronous";
constexpr const char* kAsynchronousLet = "modComponents Property Let CCDSoftIsAsynchronous";
constexpr const char* kTakeImage = "Module modComponents sub TakeCCDSoftImage";

}  // namespace

bool CCDSoftCamera::isLinked() { return camera()->get("State").toInt() == 0; }

void CCDSoftCamera::link(bool value) { camera()->call(value ? "Connect" : "Disconnect"); }

void CCDSoftCamera::renew() {
    tools_.programs.ccdSoftCamera = tools_.services.automation.create("CCDSoft.Camera");
}

void CCDSoftCamera::letGo() {
    renew();
    tools_.attempt(kDisconnectCCDSoft, [&] {
        camera()->call("Disconnect");
        tools_.programs.ccdSoftCamera.reset();
    });
}

void CCDSoftCamera::save(const std::string& path) {
    const ObjectRef image = held(tools_.programs.ccdSoftImage);
    image->put("path", path);
    image->call("Save");
}

void CCDSoftCamera::abortSilently() {
    try {
        camera()->call("abort");
    } catch (...) {
        // Nothing to abort.
    }
}

void CCDSoftCamera::expose(double seconds) {
    setUp();
    const int bin = tools_.binning();
    camera()->put("BinX", bin);
    camera()->put("BinY", bin);
    tools_.bringProgramForward();
    if (tools_.stopped()) return;
    tools_.PostExposureDelay = tools_.graceDelay();
    TakeCCDSoftImage(tools_.PostExposureDelay, seconds, true);
}

void CCDSoftCamera::setUp() {
    struct Setting {
        const char* member;
        int value;
    };
    for (const Setting& setting : {Setting{"AutoSaveOn", 0},
                                   {"ScreenShutter", 0},
                                   {"ToNewWindow", 0},
                                   {"Subframe", 0},
                                   {"AutoSaveFileFormat", 0},
                                   {"Series", 1},
                                   {"ImageReduction", 1}}) {
        try {
            camera()->put(setting.member, setting.value);
        } catch (...) {
            // Not every version knows every setting.
        }
    }
}

void CCDSoftCamera::TakeCCDSoftImage(double delay, double seconds, bool light) {
    tools_.services.state.CameraFailed = false;
    try {
        if (!imageIsTaken(delay, seconds, light)) reportTakeCCDSoftImage(noFailure());
    } catch (...) {
        reportTakeCCDSoftImage(currentError());
    }
}

/// False when the exposure was aborted or its image never came.
bool CCDSoftCamera::imageIsTaken(double delay, double seconds, bool light) {
    if (tools_.services.state.StopRequested) {
        camera()->call("abort");
        return false;
    }
    constexpr double kShortest = 0.11;  // the program takes no exposure of no length
    if (seconds == 0) seconds = kShortest;
    camera()->put("Frame", light ? 1 : 3);
    camera()->put("Subframe", tools_.fields.chkUseCCDSoftSubFrame.ticked());
    camera()->put("ExposureTime", seconds);

    const auto timeLeft = awaitExposure(seconds);
    if (!timeLeft) return false;

    const auto complete = [&] { return camera()->get("IsExposureComplete").toBool(); };
    if (!complete()) WaitSeconds(tools_.services.loop, delay > 0 ? delay : kDefaultGrace);
    if (complete()) {
        AttachCCDSoftImageToActiveImager();
        return true;
    }
    tools_.services.log.AddToLog("** CCD Soft Image not available (after waiting " +
                                 toText(kExposureTimeOut - *timeLeft) + " sec) **");
    tools_.services.log.AddToLog("mod TakeCCDImage");
    camera()->call("abort");
    return false;
}

/// Takes the exposure. What is left of the time-out (seconds); nothing when the operator stopped it.
std::optional<double> CCDSoftCamera::awaitExposure(double seconds) {
    double timeLeft = seconds + kExposureTimeOut;
    setCCDSoftIsAsynchronous(true);
    const bool asynchronous = CCDSoftIsAsynchronous();
    camera()->call("TakeImage");
    if (!asynchronous) return timeLeft;
    for (int polls = 1; timeLeft > 0 && !camera()->get("IsExposureComplete").toBool(); ++polls) {
        if (tools_.stopped()) {
            camera()->call("abort");
            camera()->call("abort");
            return std::nullopt;
        }
        WaitSeconds(tools_.services.loop, kExposurePoll);
        timeLeft = seconds + kExposureTimeOut - polls * kExposurePoll;
    }
    return timeLeft;
}

void CCDSoftCamera::reportTakeCCDSoftImage(const OperationError& error) {
    if (tools_.services.state.AppUnloading) return;
    const auto tell = [&](const char* text) {
        tools_.services.log.AddToLog(text);
        tools_.services.messages.ShowPopupMessage(text, tools_.services.messages.displaySeconds());
    };
    if (error.number() == 0 && tools_.services.state.StopRequested)
        tell("Exposure aborted");
    else if (error.number() == kExposureAborted)
        tell("Exposure Aborted");
    else
        tools_.report(error, kTakeImage);
    tools_.services.state.CameraFailed = true;
}

bool CCDSoftCamera::CCDSoftIsAsynchronous() {
    try {
        return camera()->get("Asynchronous").toBool();
    } catch (...) {
        tools_.services.state.LastMessage = sourcedErrorReport(currentError(), kAsynchronousGet);
        return false;
    }
}

void CCDSoftCamera::setCCDSoftIsAsynchronous(bool value) {
    try {
        camera()->put("Asynchronous", value);
    } catch (...) {
        tools_.services.state.LastMessage = sourcedErrorReport(currentError(), kAsynchronousLet);
    }
}

void CCDSoftCamera::AttachCCDSoftImageToActiveImager() {
    tools_.attempt(kAttach, [&] {
        tools_.programs.ccdSoftImage = tools_.services.automation.create("CCDsoft.Image");
        held(tools_.programs.ccdSoftImage)->call("AttachToActiveImager");
    });
}

}  // namespace vantrel::devices
