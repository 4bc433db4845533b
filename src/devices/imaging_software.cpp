#include "devices/imaging_software.h"

#include <algorithm>
#include <array>

#include "engine/indicators.h"
#include "engine/waiting.h"
#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;
using engine::WaitSeconds;

namespace {

constexpr const char* kSection = "PolarAlign";
constexpr const char* kKey = "ImagingSoftware";
constexpr const char* kMaxIm = "MaxIm";
constexpr const char* kCCDSoft = "CCDSoft";
constexpr const char* kBuiltIn = "BuiltIn";
constexpr const char* kUndecided = "NeedToSelect";
constexpr const char* kMaxImServer = "MaxIm.CCDCamera";
constexpr const char* kCCDSoftServer = "CCDSoft.Camera";
constexpr const char* kOldestCCDSoft = "5.00.73";
constexpr double kLongMessage = 10;  // seconds

std::string lines(std::initializer_list<const char*> texts) {
    std::string joined;
    for (const char* text : texts) joined += (joined.empty() ? "" : kCrLf) + std::string(text);
    return joined;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text)
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    return parts;
}

/// A version record may hold "5, 0, 0, 73": everything but the last part counts, with points.
std::string withPoints(const std::string& version) {
    std::vector<std::string> parts = split(version, ',');
    if (parts.size() == 1) return version;
    std::string joined = parts.front();
    for (std::size_t i = 1; i + 1 < parts.size(); ++i) joined += "." + parts[i];
    return joined;
}

/// The first three parts as whole numbers; missing ones count as 0.
std::array<long, 3> versionParts(const std::string& version) {
    std::array<long, 3> numbers{};
    const auto parts = split(version, '.');
    for (std::size_t i = 0; i < std::min(parts.size(), numbers.size()); ++i)
        numbers.at(i) = static_cast<long>(std::clamp(leadingNumber(parts[i]), -1e9, 1e9));
    return numbers;
}

}  // namespace

ImagingSoftwareChoice::ImagingSoftwareChoice(const LinkServices& services, WindowSystem& desktop,
                                             ImagingObjects& programs, ImagingWindows& windows,
                                             CameraLink& camera, const ImagingSoftwareControls& controls,
                                             frmSelectCCSoftware& dialog)
    : services_(services),
      desktop_(desktop),
      programs_(programs),
      windows_(windows),
      camera_(camera),
      controls_(controls),
      dialog_(dialog) {
    controls_.imaging.optCCDSoft.onClick = [this] { useCCDSoft(); };
    controls_.imaging.optMaxIm.onClick = [this] { useMaxIm(); };
    controls_.imaging.optBuiltIn.onClick = [this] { useBuiltIn(); };
    const auto enableOK = [this] { dialog_.cmdImagingSoftwareOK.setEnabled(true); };
    dialog_.optMaxIm.onClick = enableOK;
    dialog_.optCCDSoft.onClick = enableOK;
    dialog_.cmdImagingSoftwareOK.onClick = [this] { cmdImagingSoftwareOK_Click(); };
    dialog_.onClose = [] {};  // the start-up waits for an answer
}

// ---- the choice

void ImagingSoftwareChoice::startUp() {
    storeProgramThatIsOpen();
    GetImagingSW();
    selectOption(services_.settings.GetSetting(kSection, kKey, ""));
}

/// Who has chosen the built-in program wants no other, whichever is open.
void ImagingSoftwareChoice::storeProgramThatIsOpen() {
    if (services_.settings.GetSetting(kSection, kKey, "") == kBuiltIn) return;
    const bool maxIm = windows_.WindowTitleExists("MaxIm DL", true, false);
    const bool ccdSoft = windows_.WindowTitleExists("CCDSoft", true, false);
    if (maxIm == ccdSoft) return;
    services_.settings.SaveSetting(kSection, kKey, maxIm ? kMaxIm : kCCDSoft);
}

void ImagingSoftwareChoice::GetImagingSW() {
    programs_.ImagingSoftware = services_.settings.GetSetting(kSection, kKey, kUndecided);
    if (programs_.ImagingSoftware != kUndecided) {
        selectOption(programs_.ImagingSoftware);
        return;
    }
    const bool hasMaxIm = !GetProgIDServerPath(kMaxImServer).empty();
    const bool hasCCDSoft = !GetProgIDServerPath(kCCDSoftServer).empty();
    if (hasMaxIm && hasCCDSoft) {
        askOperator();
    } else if (!hasMaxIm && !hasCCDSoft) {
        reportNoProgram();
    } else {
        setProgram(hasMaxIm ? kMaxIm : kCCDSoft);
        selectOption(programs_.ImagingSoftware);
    }
}

/// Selecting an option runs its click, which launches the program.
void ImagingSoftwareChoice::selectOption(const std::string& program) {
    if (program == kCCDSoft) controls_.imaging.optCCDSoft.select();
    if (program == kMaxIm) controls_.imaging.optMaxIm.select();
    if (program == kBuiltIn) controls_.imaging.optBuiltIn.select();
}

void ImagingSoftwareChoice::reportNoProgram() {
    services_.log.AddToLog("Neither MaxIm DL/CCD nor CCDSoft can be found");
    services_.log.AddToLog("You must install your Imaging Software");
    popUp(lines({"Neither MaxIm DL/CCD", " nor CCDSoft can be found ", "You must install your",
                 "Imaging Software"}),
          kLongMessage);
}

void ImagingSoftwareChoice::askOperator() {
    ImagingSoftwareSelected_ = false;
    dialog_.optMaxIm.clear();
    dialog_.optCCDSoft.clear();
    dialog_.cmdImagingSoftwareOK.setEnabled(false);
    dialog_.show();
    while (!ImagingSoftwareSelected_ && !services_.state.AppUnloading) WaitSeconds(services_.loop, 1);
}

void ImagingSoftwareChoice::cmdImagingSoftwareOK_Click() {
    dialog_.cmdImagingSoftwareOK.setEnabled(false);
    const char* const program = dialog_.optMaxIm.selected() ? kMaxIm : kCCDSoft;
    setProgram(program);
    selectOption(program);
    ImagingSoftwareSelected_ = true;
    dialog_.unload();
}

void ImagingSoftwareChoice::setProgram(const std::string& program) {
    programs_.ImagingSoftware = program;
    services_.settings.SaveSetting(kSection, kKey, program);
}

void ImagingSoftwareChoice::useCCDSoft() {
    stopExposeSeries();
    setProgram(kCCDSoft);
    LaunchCCDSoft();
    if (!isInForce(kCCDSoft)) return;
    controls_.optAutoAstrometry.setEnabled(true);
}

void ImagingSoftwareChoice::useMaxIm() {
    stopExposeSeries();
    setProgram(kMaxIm);
    LaunchMaxIm();
    if (!isInForce(kMaxIm)) return;
    controls_.optPinPoint.select();
    controls_.optAutoAstrometry.setEnabled(false);
}

void ImagingSoftwareChoice::useBuiltIn() {
    stopExposeSeries();
    setProgram(kBuiltIn);
    startBuiltIn();
    if (!isInForce(kBuiltIn)) return;
    controls_.optPinPoint.select();
    controls_.optAutoAstrometry.setEnabled(false);
}

/// False once the operator chose another program while this one was waited for, or the program ends.
bool ImagingSoftwareChoice::isInForce(const std::string& program) const {
    return programs_.ImagingSoftware == program && !services_.state.AppUnloading;
}

void ImagingSoftwareChoice::stopExposeSeries() {
    if (engine::Indicators::isLit(controls_.cmdExpose)) controls_.cmdExpose.press();
}

std::string ImagingSoftwareChoice::GetProgIDServerPath(const std::string& progId) const {
    return services_.automation.serverPath(progId);
}

// ---- MaxIm DL

void ImagingSoftwareChoice::LaunchMaxIm() {
    try {
        const std::string path = GetProgIDServerPath(kMaxImServer);
        if (path.empty()) return;
        if (windows_.FindMaxImMainWindow() == 0) {
            popUp(lines({" Launching MaxIm DL ", " Please wait "}), kLongMessage);
            services_.loop.yield();
            desktop_.startProgram(path);
        }
        const ObjectRef application = services_.automation.create("MaxIm.Application");
        services_.log.AddToLog("MaxIm DL/CCD V " + required(application).get("Version").toText() +
                               " is the Imaging Software");
        popUp(lines({" Conecting to Camera ", " Please wait "}), kLongMessage);
        services_.loop.yield();
        if (MaxImSupportsScripting())
            connectMaxIm();
        else
            reportNoScripting();
    } catch (...) {
        services_.log.AddToLog("Could not start MaxIm");
        popUp("Could not start MaxIm", kLongMessage);
    }
}

bool ImagingSoftwareChoice::MaxImSupportsScripting() {
    try {
        required(services_.automation.create(kMaxImServer)).put("DisableAutoShutdown", true);
        return true;
    } catch (...) {
        return false;
    }
}

void ImagingSoftwareChoice::connectMaxIm() {
    programs_.maxImCamera = services_.automation.create(kMaxImServer);
    linkCamera("Verify camera model in MaxIm");
    finishLaunch();
}

void ImagingSoftwareChoice::reportNoScripting() {
    services_.log.AddToLog("Your MaxIm DL Version does not support Scripting");
    services_.log.AddToLog("MaxIm DL Version must be 2.06 or greater");
    services_.log.AddToLog("MaxIm DL Camera could not be Connected");
    popUp(lines({"MaxIm Version must be", "2.0.6 or greater", "", " MaxIm Camera Not Connected "}),
          kLongMessage);
    WaitSeconds(services_.loop, 10);
}

// ---- CCDSoft

void ImagingSoftwareChoice::LaunchCCDSoft() {
    try {
        const std::string path = GetProgIDServerPath(kCCDSoftServer);
        if (!ccdSoftIsUsable(path)) return;
        if (windows_.FindCCDSoftWindow() == 0) {
            popUp(lines({" Launching CCDSoft ", " Please wait "}), kLongMessage);
            services_.loop.yield();
            ShellOpenFile(path);
            services_.loop.yield();
            if (!isInForce(kCCDSoft)) return;
        }
        popUp(lines({" Conecting to Camera ", " Please wait "}), kLongMessage);
        services_.loop.yield();
        programs_.ccdSoftCamera = services_.automation.create("CCDsoft.Camera");
        linkCamera("Verify camera model in CCDSoft");
        finishLaunch();
    } catch (...) {
        const std::string report = errorReport(currentError(), "modUtility Sub LaunchCCDSoft");
        services_.log.AddToLog(report);
        popUp(report, kMessageSeconds);
    }
}

/// Installed, and recent enough; reports what is wrong.
bool ImagingSoftwareChoice::ccdSoftIsUsable(const std::string& path) {
    if (path.empty()) {
        services_.log.AddToLog("Could not find CCDSoft on this computer");
        popUp("Could not find CCDSoft", kLongMessage);
        WaitSeconds(services_.loop, 10);
        return false;
    }
    const VersionTest test = FileVersionIsRecent(path, kOldestCCDSoft);
    if (!test.recent) {
        services_.log.AddToLog("You are using CCDSoft Version " + test.version);
        services_.log.AddToLog("CCDSoft Version must be 5.00.73 or greater");
        services_.log.AddToLog("CCDSoft launch terminated");
        popUp(lines({"CCDSoft Version must be", "5.00.73 or greater", "", " CCDSoft Launch Terminated "}),
              kLongMessage);
        WaitSeconds(services_.loop, 10);
        return false;
    }
    services_.log.AddToLog("CCDSoft V " + test.version + " is the Imaging Software");
    return true;
}

ImagingSoftwareChoice::VersionTest ImagingSoftwareChoice::FileVersionIsRecent(const std::string& path,
                                                                              const std::string& required) {
    const std::string check = services_.settings.GetSetting(kSection, "ImagingSWVersionCheck", "1");
    if (leadingNumber(check) == 0) return {true, "Unknown"};
    const auto recorded = desktop_.fileVersion(path);
    if (!recorded) {
        services_.log.AddToLog("** Function FileVersionIsRecent error: Not a 32-bit executable! **");
        return {false, ""};
    }
    const std::string version = withPoints(*recorded);
    return {versionParts(version) >= versionParts(required), version};
}

void ImagingSoftwareChoice::ShellOpenFile(const std::string& path) {
    constexpr int kGreatestFailure = 32;
    const auto slash = path.rfind('\\');
    const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash);
    const int result = desktop_.shellOpen(path, folder);
    if (result <= kGreatestFailure) {
        services_.log.AddToLog("Unable to open " + path + " because of error " + std::to_string(result));
        return;
    }
    while (isInForce(kCCDSoft) && windows_.FindCCDSoftWindow() == 0) WaitSeconds(services_.loop, 1);
    while (isInForce(kCCDSoft) && !desktop_.programIsIdle(path)) WaitSeconds(services_.loop, 1);
}

// ---- the built-in program

/// It is always there and has no windows of its own to be looked for.
void ImagingSoftwareChoice::startBuiltIn() {
    try {
        services_.log.AddToLog("Built-in camera program is the Imaging Software");
        popUp(lines({" Conecting to Camera ", " Please wait "}), kLongMessage);
        services_.loop.yield();
        programs_.builtInCamera = services_.automation.create("Vantrel.CCDCamera");
        linkCamera("Verify camera in Devices");
        services_.messages.ClosePopupMessage();
    } catch (...) {
        services_.log.AddToLog(errorReport(currentError(), "Built-in camera program"));
        popUp("Could not start the built-in camera program", kLongMessage);
    }
}

// ---- all

void ImagingSoftwareChoice::linkCamera(const char* verifyText) {
    camera_.setCamLinkEnabled(true);
    if (camera_.camLinkEnabled()) return;
    popUp(lines({"Failed to start camera!", verifyText}), services_.messages.displaySeconds());
    WaitSeconds(services_.loop, 3);
}

void ImagingSoftwareChoice::finishLaunch() {
    if (leadingNumber(services_.settings.GetSetting(kSection, "EnableRestoreImagingSW", "0")) == 1)
        windows_.BringImagingSWToFront();
    services_.messages.ClosePopupMessage();
}

void ImagingSoftwareChoice::popUp(const std::string& text, double seconds) {
    services_.messages.ShowPopupMessage(text, seconds);
}

}  // namespace vantrel::devices
