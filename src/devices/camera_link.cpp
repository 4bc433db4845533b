#include "devices/camera_link.h"

#include <utility>

#include "engine/waiting.h"
#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;
using engine::WaitSeconds;

namespace {

constexpr double kMessage = 5;       // seconds
constexpr double kPoll = 0.1;        // seconds between two looks at an exposure
constexpr double kTimeOut = 60;      // seconds beyond the exposure time
constexpr double kDefaultGrace = 2;  // seconds
constexpr int kAborted = 65535;      // the imaging program's own abort
constexpr int kExposureFailed = 32768;
constexpr const char* kMaxImCamera = "MaxIm.CCDCamera";
constexpr const char* kCCDSoftCamera = "CCDSoft.Camera";

constexpr const char* kLinkGet = "Module modComponents Property Get camLinkEnabled";
constexpr const char* kLinkLet = "Module modComponents Property Let camLinkEnabled";
constexpr const char* kShutdownLet = "Module modComponents Property Let camDisableAutoShutdown";
constexpr const char* kDisconnectMaxIm = "Module modComponents Sub DisconnectMaxImCamera";
constexpr const char* kDisconnectCCDSoft = "Module modComponents Sub DisconnectCCDSoftCamera";
constexpr const char* kAttach = "Module modComponents Sub AttachCCDSoftImageToActiveImager";
constexpr const char* kAsynchronousGet = "modComponents Property Get CCDSoftIsAsynchronous";
constexpr const char* kAsynchronousLet = "modComponents Property Let CCDSoftIsAsynchronous";
constexpr const char* kAcquire = "Module modComponents Sub AcquireImage";
constexpr const char* kTakePicture = "Module modComponents sub TakePicture";
constexpr const char* kTakeCCDSoftImage = "Module modComponents sub TakeCCDSoftImage";
constexpr const char* kSave = "modUtilities Sub SaveImageToFile";

/// A report without a failure: the program in use is neither of the two, or an image never came.
OperationError noFailure() { return {0, "", ""}; }

/// The object, kept alive while it is used: events that run meanwhile may release it. Failure 91 for none.
ObjectRef held(const ObjectRef& object) {
    required(object);
    return object;
}

}  // namespace

/// Makes another program the one in use for as long as this lives.
class CameraLink::ProgramForTheMoment {
  public:
    ProgramForTheMoment(ImagingPrograms& programs, std::string program)
        : programs_(programs), before_(std::exchange(programs.ImagingSoftware, std::move(program))) {}
    ~ProgramForTheMoment() { programs_.ImagingSoftware = before_; }
    ProgramForTheMoment(const ProgramForTheMoment&) = delete;
    ProgramForTheMoment& operator=(const ProgramForTheMoment&) = delete;

  private:
    ImagingPrograms& programs_;
    std::string before_;
};

CameraLink::CameraLink(const Services& services, ImagingPrograms& programs, ImagingWindows& windows,
                       const CameraFields& fields)
    : services_(services), programs_(programs), windows_(windows), fields_(fields) {}

// ---- one exposure

void CameraLink::AcquireImage(double seconds) {
    if (services_.state.AppUnloading) return;
    setCamLinkEnabled(true);
    if (!camLinkEnabled()) {
        CameraMessage_ =
            std::string("Failed to start camera!") + kCrLf + "Verify camera model in Imaging Software";
        services_.messages.ShowPopupMessage(CameraMessage_, services_.messages.displaySeconds());
        services_.log.AddToLog(CameraMessage_);
        return;
    }
    try {
        if (programs_.usesMaxIm())
            exposeWithMaxIm(seconds);
        else if (programs_.usesCCDSoft())
            exposeWithCCDSoft(seconds);
    } catch (...) {
        // The camera refused its binning or frame: there is no image.
        report(currentError(), kAcquire);
        services_.state.CameraFailed = true;
    }
}

void CameraLink::exposeWithMaxIm(double seconds) {
    CameraFilter_ = windows_.GetCameraFilter();
    maxIm()->put("BinX", 1);
    maxIm()->put("BinY", 1);
    maxIm()->call("SetFullFrame");
    maxIm()->get("MaxBinX");
    maxIm()->get("MaxBinY");
    const int bin = binning();
    maxIm()->put("BinX", bin);
    maxIm()->put("BinY", bin);
    bringProgramForward();
    if (!services_.state.StopRequested && !services_.state.AppUnloading) TakePicture(seconds);
}

void CameraLink::exposeWithCCDSoft(double seconds) {
    setUpCCDSoft();
    const int bin = binning();
    ccdSoft()->put("BinX", bin);
    ccdSoft()->put("BinY", bin);
    bringProgramForward();
    if (services_.state.StopRequested || services_.state.AppUnloading) return;
    PostExposureDelay_ = graceDelay();
    TakeCCDSoftImage(PostExposureDelay_, seconds, true);
}

void CameraLink::setUpCCDSoft() {
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
            ccdSoft()->put(setting.member, setting.value);
        } catch (...) {
            // Not every version knows every setting.
        }
    }
}

void CameraLink::bringProgramForward() {
    if (leadingNumber(services_.settings.GetSetting("PolarAlign", "EnableRestoreImagingSW", "0")) == 1)
        windows_.BringImagingSWToFront();
}

std::int16_t CameraLink::binning() {
    return toInt16(toNumber(services_.settings.GetSetting("Solve", "CamBin", "3")));
}

/// Compared as a text, so that a minus sign or an empty field means none.
double CameraLink::graceDelay() const {
    const std::string& text = fields_.txtPostExpDelay.text();
    return text > "0" ? leadingNumber(text) : 0;
}

// ---- the first program

void CameraLink::TakePicture(double seconds) {
    services_.state.CameraFailed = false;
    if (services_.state.StopRequested) return;
    try {
        const bool light = seconds >= 0;
        if (!light) seconds = -seconds;
        if (PostExposureDelay_ > 0) WaitSeconds(services_.loop, PostExposureDelay_);
        startMaxImExposure(seconds, light);
        awaitMaxImImage(seconds);
    } catch (...) {
        reportTakePicture(currentError());
    }
}

void CameraLink::startMaxImExposure(double seconds, bool light) {
    bool started = false;
    try {
        started = maxIm()->call("Expose", {seconds, light ? 1 : 0, int{CameraFilter_}}).toBool();
    } catch (...) {
        started = false;
    }
    if (!started)
        throw OperationError(kExposureFailed, kMaxImCamera, "MaxIm DL Failed to start the exposure");
}

void CameraLink::awaitMaxImImage(double seconds) {
    const double grace = graceDelay();
    const auto ready = [&] { return maxIm()->get("ImageReady").toBool(); };
    for (int polls = 0; seconds + kTimeOut - polls * kPoll > 0; ++polls) {
        if (ready()) return;
        WaitSeconds(services_.loop, kPoll);
        if (services_.state.StopRequested) return;
    }
    WaitSeconds(services_.loop, grace > 0 ? grace : kDefaultGrace);
    if (!ready())
        throw OperationError(kExposureFailed, kMaxImCamera,
                             "Exposure by MaxIm DL failed after being successfully started.");
}

void CameraLink::reportTakePicture(const OperationError& error) {
    if (error.number() == kAborted) {
        services_.log.AddToLog("Exposure Aborted");
        services_.messages.ShowPopupMessage("Exposure Aborted", kMessage);
    } else {
        CameraMessage_ = errorReport(error, kTakePicture);
        services_.messages.ShowPopupMessage(CameraMessage_, kMessage);
        services_.log.AddToLog(CameraMessage_);
    }
    services_.state.CameraFailed = true;
}

// ---- the second program

void CameraLink::TakeCCDSoftImage(double delay, double seconds, bool light) {
    services_.state.CameraFailed = false;
    try {
        if (!ccdSoftImageIsTaken(delay, seconds, light)) reportTakeCCDSoftImage(noFailure());
    } catch (...) {
        reportTakeCCDSoftImage(currentError());
    }
}

/// False when the exposure was aborted or its image never came.
bool CameraLink::ccdSoftImageIsTaken(double delay, double seconds, bool light) {
    if (services_.state.StopRequested) {
        ccdSoft()->call("abort");
        return false;
    }
    constexpr double kShortest = 0.11;  // the program takes no exposure of no length
    if (seconds == 0) seconds = kShortest;
    ccdSoft()->put("Frame", light ? 1 : 3);
    ccdSoft()->put("Subframe", fields_.chkUseCCDSoftSubFrame.ticked());
    ccdSoft()->put("ExposureTime", seconds);

    const auto timeLeft = awaitCCDSoftExposure(seconds);
    if (!timeLeft) return false;

    const auto complete = [&] { return ccdSoft()->get("IsExposureComplete").toBool(); };
    if (!complete()) WaitSeconds(services_.loop, delay > 0 ? delay : kDefaultGrace);
    if (complete()) {
        AttachCCDSoftImageToActiveImager();
        return true;
    }
    services_.log.AddToLog("** CCD Soft Image not available (after waiting " + toText(kTimeOut - *timeLeft) +
                           " sec) **");
    services_.log.AddToLog("mod TakeCCDImage");
    ccdSoft()->call("abort");
    return false;
}

/// Takes the exposure. What is left of the time-out (seconds); nothing when the operator stopped it.
std::optional<double> CameraLink::awaitCCDSoftExposure(double seconds) {
    double timeLeft = seconds + kTimeOut;
    setCCDSoftIsAsynchronous(true);
    const bool asynchronous = CCDSoftIsAsynchronous();
    ccdSoft()->call("TakeImage");
    if (!asynchronous) return timeLeft;
    for (int polls = 1; timeLeft > 0 && !ccdSoft()->get("IsExposureComplete").toBool(); ++polls) {
        if (services_.state.StopRequested || services_.state.AppUnloading) {
            ccdSoft()->call("abort");
            ccdSoft()->call("abort");
            return std::nullopt;
        }
        WaitSeconds(services_.loop, kPoll);
        timeLeft = seconds + kTimeOut - polls * kPoll;
    }
    return timeLeft;
}

void CameraLink::reportTakeCCDSoftImage(const OperationError& error) {
    if (services_.state.AppUnloading) return;
    const auto tell = [&](const char* text) {
        services_.log.AddToLog(text);
        services_.messages.ShowPopupMessage(text, services_.messages.displaySeconds());
    };
    if (error.number() == 0 && services_.state.StopRequested)
        tell("Exposure aborted");
    else if (error.number() == kAborted)
        tell("Exposure Aborted");
    else
        report(error, kTakeCCDSoftImage);
    services_.state.CameraFailed = true;
}

bool CameraLink::CCDSoftIsAsynchronous() {
    if (!programs_.usesCCDSoft()) return false;
    try {
        return ccdSoft()->get("Asynchronous").toBool();
    } catch (...) {
        services_.state.LastMessage = sourcedErrorReport(currentError(), kAsynchronousGet);
        return false;
    }
}

void CameraLink::setCCDSoftIsAsynchronous(bool value) {
    if (!programs_.usesCCDSoft()) return;
    try {
        ccdSoft()->put("Asynchronous", value);
    } catch (...) {
        services_.state.LastMessage = sourcedErrorReport(currentError(), kAsynchronousLet);
    }
}

void CameraLink::AttachCCDSoftImageToActiveImager() {
    attempt(kAttach, [&] {
        programs_.ccdSoftImage = services_.automation.create("CCDsoft.Image");
        held(programs_.ccdSoftImage)->call("AttachToActiveImager");
    });
}

void CameraLink::abortCCDSoftExposure() {
    if (!programs_.usesCCDSoft()) return;
    try {
        ccdSoft()->call("abort");
    } catch (...) {
        // Nothing to abort.
    }
}

// ---- the link

bool CameraLink::camLinkEnabled() {
    bool enabled = false;
    attempt(kLinkGet, [&] {
        if (programs_.usesMaxIm())
            enabled = maxIm()->get("LinkEnabled").toBool();
        else if (programs_.usesCCDSoft())
            enabled = ccdSoft()->get("State").toInt() == 0;
        else
            throw noFailure();
    });
    return enabled;
}

void CameraLink::setCamLinkEnabled(bool value) {
    attempt(kLinkLet, [&] {
        if (programs_.usesMaxIm()) {
            freeCameraFromCCDSoft();
            maxIm()->put("LinkEnabled", value);
        } else if (programs_.usesCCDSoft()) {
            if (value) freeCameraFromMaxIm();
            ccdSoft()->call(value ? "Connect" : "Disconnect");
        } else {
            throw noFailure();
        }
    });
}

void CameraLink::freeCameraFromCCDSoft() {
    if (windows_.searchCCDSoftWindow() == 0) return;
    const ProgramForTheMoment other(programs_, "CCDSoft");
    programs_.ccdSoftCamera = services_.automation.create(kCCDSoftCamera);
    DisconnectCCDSoftCamera();
}

void CameraLink::freeCameraFromMaxIm() {
    if (windows_.FindMaxImMainWindow() == 0) return;
    const ProgramForTheMoment other(programs_, "MaxIm");
    programs_.maxImCamera = services_.automation.create(kMaxImCamera);
    DisconnectMaxImCamera();
}

void CameraLink::DisconnectMaxImCamera() {
    if (!programs_.usesMaxIm()) return;
    attempt(kDisconnectMaxIm, [&] {
        if (windows_.MaxImCameraIsConnected()) {
            maxIm()->put("LinkEnabled", true);
            maxIm()->put("LinkEnabled", false);
        }
    });
    programs_.maxImCamera.reset();
}

void CameraLink::DisconnectCCDSoftCamera() {
    if (!programs_.usesCCDSoft()) return;
    attempt(kDisconnectCCDSoft, [&] {
        ccdSoft()->call("Disconnect");
        programs_.ccdSoftCamera.reset();
    });
}

void CameraLink::setCamDisableAutoShutdown(bool value) {
    if (!programs_.usesMaxIm()) return;
    attempt(kShutdownLet, [&] { maxIm()->put("DisableAutoShutdown", value); });
}

// ---- saving

void CameraLink::SaveImageToFile(const std::string& fileName) {
    try {
        const std::string path =
            services_.settings.GetSetting("PolarAlign", "ImagePath", "C:") + "\\" + fileName;
        if (programs_.usesCCDSoft()) {
            const ObjectRef image = held(programs_.ccdSoftImage);
            image->put("path", path);
            image->call("Save");
        } else if (programs_.usesMaxIm()) {
            maxIm()->call("SaveImage", {path});
        } else {
            throw noFailure();
        }
        services_.state.LastSavedImage = fileName;
        services_.loop.yield();
    } catch (...) {
        CameraMessage_ = sourcedErrorReport(currentError(), kSave);
        services_.log.AddToLog(CameraMessage_);
    }
}

// ---- the objects and the reports

ObjectRef CameraLink::maxIm() { return held(programs_.maxImCamera); }

ObjectRef CameraLink::ccdSoft() { return held(programs_.ccdSoftCamera); }

template <typename Body>
void CameraLink::attempt(const char* label, Body&& body) {
    try {
        body();
    } catch (...) {
        report(currentError(), label);
    }
}

void CameraLink::report(const OperationError& error, const char* label) {
    CameraMessage_ = sourcedErrorReport(error, label);
    services_.messages.ShowPopupMessage(CameraMessage_, kMessage);
    services_.log.AddToLog(CameraMessage_);
}

}  // namespace vantrel::devices
