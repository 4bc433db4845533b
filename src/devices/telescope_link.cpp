#include "devices/telescope_link.h"

#include <cmath>

#include "devices/slew_watch.h"
#include "engine/angles.h"
#include "engine/waiting.h"
#include "platform/sidereal.h"
#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;
using engine::NormalizeRAHours;
using engine::WaitSeconds;

enum class PopUp { kNever, kFiveSeconds, kDisplayTime };

struct LinkOperation {
    const char* kind;
    const char* name;
    PopUp popUp = PopUp::kNever;
    const char* hint = "";     // where to look when there is no driver
    bool namesSource = false;  // in the report of an uncommon failure
};

namespace {

constexpr const char* kSetupTab = "Telescope Setup tab";
constexpr const char* kCheckSetupTab = "Check Telescope Setup Tab";

constexpr LinkOperation kChoose{"Sub", "ChooseTelescope", PopUp::kFiveSeconds, kSetupTab};
constexpr LinkOperation kLoad{"Sub", "LoadTelescope", PopUp::kFiveSeconds, kSetupTab};
constexpr LinkOperation kConnect{"Sub", "ConnectTelescope", PopUp::kFiveSeconds, kSetupTab};
constexpr LinkOperation kDisconnect{"Sub", "DisconnectTelescope", PopUp::kFiveSeconds, kSetupTab, true};
constexpr LinkOperation kSetup{"Sub", "SetupTelescope", PopUp::kDisplayTime, kSetupTab, true};
constexpr LinkOperation kSlew{"Sub", "SlewToCoordinates", PopUp::kDisplayTime, kCheckSetupTab, true};
constexpr LinkOperation kAbort{"Sub", "AbortTelescopeSlew", PopUp::kDisplayTime, kSetupTab, true};
constexpr LinkOperation kGetDec{"Function", "GetTelescopeDec", PopUp::kDisplayTime, kCheckSetupTab, true};
constexpr LinkOperation kGetRA{"Function", "GetTelescopeRA"};
constexpr LinkOperation kSiderealTime{"Function", "SiderealTime"};
constexpr LinkOperation kSiteLatitude{"Function", "SiteLatitude"};
constexpr LinkOperation kSiteLongitude{"Function", "SiteLongitude"};

constexpr const char* kTheSky = "TheSky.Telescope";
constexpr const char* kAxisSimulator = "AxisSimulator.Telescope";
constexpr const char* kScopeSim = "ScopeSim.Telescope";
constexpr const char* kGemini = "GeminiTnF.Telescope";

constexpr const char* kLoading = "Loading ASCOM Telescope\r\nPlease Wait";
constexpr double kLoadingMessage = 1000;  // seconds
constexpr double kNoDec = -1000;

bool isDeclination(double degrees) { return -90 <= degrees && degrees <= 90; }

std::string label(const LinkOperation& operation) {
    return std::string("modComponents ") + operation.kind + " " + operation.name;
}

}  // namespace

/// While one lives, the driver is not released behind the operation's back.
class TelescopeLink::Linking {
  public:
    explicit Linking(int& count) : count_(count) { ++count_; }
    ~Linking() { --count_; }
    Linking(const Linking&) = delete;
    Linking& operator=(const Linking&) = delete;

  private:
    int& count_;
};

/// While one lives, the driver is being asked to let go.
class TelescopeLink::Disconnecting {
  public:
    explicit Disconnecting(bool& flag) : flag_(flag) { flag_ = true; }
    ~Disconnecting() { flag_ = false; }
    Disconnecting(const Disconnecting&) = delete;
    Disconnecting& operator=(const Disconnecting&) = delete;

  private:
    bool& flag_;
};

TelescopeLink::TelescopeLink(const LinkServices& services, engine::UtilityPort& utility, frmTelescope& window)
    : services_(services), utility_(utility), window_(window) {}

// ---- choosing, connecting, disconnecting

void TelescopeLink::ChooseTelescope() {
    attempt(kChoose, [&] {
        const ObjectRef chooser = services_.automation.create("DriverHelper.Chooser");
        required(chooser).put("DeviceType", "Telescope");
        // Some choosers return nothing when the operator cancels: the driver in use stays.
        const std::string chosen = required(chooser).call("Choose", {TelescopeProgID_}).toText();
        adopt(chosen.empty() ? TelescopeProgID_ : chosen);
    });
}

void TelescopeLink::UseTelescope(const std::string& progId) {
    attempt(kChoose, [&] { adopt(progId); });
}

void TelescopeLink::adopt(const std::string& progId) {
    TelescopeProgID_ = progId;
    TelescopeName_ = GetTelescopeFriendlyName(TelescopeProgID_);
    window_.txtTelescopeName.setText(TelescopeName_);
    services_.settings.SaveMainSetting("MyTelescopeID", TelescopeProgID_);
    showLoadingMessage();
    LoadTelescope();
    closeLoadingMessage();
}

void TelescopeLink::LoadTelescope() {
    attempt(kLoad, [&] { link(); });
}

void TelescopeLink::ConnectTelescope() {
    attempt(kConnect, [&] { link(); });
}

void TelescopeLink::link() {
    if (linking_ > 0 || TelescopeIsConnected()) return;
    const Linking guard(linking_);
    YieldPause();
    driver_ = services_.automation.create(TelescopeProgID_);
    TelescopeName_ = GetTelescopeFriendlyName(TelescopeProgID_);
    popUp(std::string(" Connecting ") + kCrLf + kCrLf + TelescopeName_ + kCrLf + kCrLf + " Please Wait ",
          kLoadingMessage);
    const ObjectRef driver = driver_;
    required(driver).put("Connected", true);
    services_.loop.yield();
    YieldPause();
    if (TelescopeProgID_ == kTheSky) WaitSeconds(services_.loop, 3);
    updateUsingAxisSimulator();
    if (driverIsConnected()) {
        const std::string name = get("Name").toText();
        services_.log.AddToLog("Telescope " + name + " is connected");
        popUp(name + kCrLf + " is connected", kMessageSeconds);
    } else {
        services_.log.AddToLog(TelescopeName_ + " is not connected");
        popUp(TelescopeName_ + kCrLf + " is not connected", kMessageSeconds);
    }
}

void TelescopeLink::DisconnectTelescope() {
    if (disconnecting_) return;
    attempt(kDisconnect, [&] {
        const Linking guard(linking_);
        const Disconnecting once(disconnecting_);
        DisconnectRequested_ = true;
        services_.loop.yield();
        const ObjectRef driver = driver_;
        required(driver).put("Connected", false);
        driver_.reset();
        services_.loop.yield();
        services_.log.AddToLog(TelescopeName_ + " is disconnected");
        window_.txtTelescopeSelectionStatus.setText(" Not Connected");
    });
}

void TelescopeLink::SetupTelescope() {
    attempt(kSetup, [&] {
        const bool wasConnected = TelescopeIsConnected();
        if (wasConnected) {
            DisconnectTelescope();
            // The operator wants the connection back after the dialog.
            clearDisconnectRequest();
        }
        {
            const Linking guard(linking_);
            driver_ = services_.automation.create(TelescopeProgID_);
            call("SetupDialog");
            if (wasConnected) driver_.reset();
        }
        if (wasConnected) {
            services_.loop.yield();
            ConnectTelescope();
        } else {
            DisconnectTelescope();
        }
    });
}

bool TelescopeLink::TelescopeIsConnected() {
    try {
        if (!driverIsConnected()) return false;
        if (TelescopeProgID_ == kTheSky) get("RightAscension");
        return true;
    } catch (...) {
        return false;
    }
}

void TelescopeLink::EnsureTelescopeConnected() {
    if (TelescopeIsConnected()) return;
    constexpr int kAttempts = 4;
    const auto& state = services_.state;
    const auto stop = [&state] { return state.StopRequested || state.AppUnloading; };
    int attempt = 0;
    do {
        ConnectTelescope();
        if (stop()) return;
        WaitSeconds(services_.loop, 3);
        YieldPause();
        if (stop()) return;
        ++attempt;
    } while (attempt < kAttempts && !TelescopeIsConnected());
}

std::string TelescopeLink::GetTelescopeFriendlyName(const std::string& progId) {
    try {
        return services_.automation.profileDescription("Telescope", progId);
    } catch (...) {
        services_.state.LastMessage =
            errorReport(currentError(), "modComponents Sub GetTelescopeFriendlyName");
        services_.log.AddToLog(services_.state.LastMessage);
        return {};
    }
}

// ---- positions and slews

double TelescopeLink::GetTelescopeRA() {
    double ra = 0;
    attempt(kGetRA, [&] { ra = NormalizeRAHours(get("RightAscension").toDouble()); });
    return ra;
}

double TelescopeLink::GetTelescopeDec() {
    double dec = 0;
    attempt(kGetDec, [&] {
        if (TelescopeIsConnected()) {
            services_.loop.yield();
            dec = get("Declination").toDouble();
        } else {
            dec = kNoDec;
        }
        if (!isDeclination(dec)) repeatReadOfDec(dec);
    });
    return dec;
}

/// `dec` holds the latest reading, also when the next one fails.
void TelescopeLink::repeatReadOfDec(double& dec) {
    constexpr int kReads = 11;
    for (int read = 0; read < kReads && !isDeclination(dec); ++read) {
        services_.loop.yield();
        WaitSeconds(services_.loop, 0.1);
        dec = get("Declination").toDouble();
    }
    if (!isDeclination(dec))
        services_.log.AddToLog("Telescope " + get("Name").toText() +
                               " returned illegal Dec value of: " + toText(dec));
}

std::optional<engine::EquatorialPosition> TelescopeLink::readingIfKnown() {
    try {
        if (!driver_ || !TelescopeIsConnected()) return std::nullopt;
        return engine::EquatorialPosition{get("RightAscension").toDouble(), get("Declination").toDouble()};
    } catch (...) {
        return std::nullopt;
    }
}

void TelescopeLink::SlewToCoordinates(double ra, double dec) {
    constexpr int kTrials = 5;
    const auto& stop = services_.state.StopRequested;
    attempt(kSlew, [&] {
        int trial = 1;
        for (; trial <= kTrials && !TelescopeMoveIsSuccessful(NormalizeRAHours(ra), dec); ++trial) {
            services_.log.AddToLog("Telescope Slew failed on Trial " + std::to_string(trial));
            if (stop) return;
            utility_.WaitForMilliseconds(3000);
            if (stop) return;
        }
        // A mount that had to be asked again may have stopped half-way.
        if (trial != 1) call("SlewToCoordinatesAsync", {NormalizeRAHours(ra), dec});
        if (reachesRealMount())
            watchSlew(NormalizeRAHours(ra), dec);
        else
            awaitEndOfSlew();
    });
}

void TelescopeLink::awaitEndOfSlew() {
    while (!services_.state.AppUnloading && get("Slewing").toBool()) {
        if (services_.state.StopRequested) AbortTelescopeSlew();
        WaitSeconds(services_.loop, 1);
    }
}

/// A slew that doesn't get on is aborted and fails; one that ended elsewhere is told.
void TelescopeLink::watchSlew(double ra, double dec) {
    const auto& stop = services_.state.StopRequested;
    const auto now = [this] { return services_.loop.clock().sinceStart(); };
    const auto position = [this] {
        return SlewWatch::Position{get("RightAscension").toDouble(), get("Declination").toDouble()};
    };
    SlewWatch watch(now(), {ra, dec});
    while (!services_.state.AppUnloading && get("Slewing").toBool()) {
        if (stop) AbortTelescopeSlew();
        const std::string complaint = watch.complaint(now(), position());
        if (!complaint.empty()) {
            AbortTelescopeSlew();
            throw OperationError(error_number::kDriverException, TelescopeProgID_,
                                 TelescopeName_ + " " + complaint);
        }
        WaitSeconds(services_.loop, 1);
    }
    if (stop || services_.state.AppUnloading) return;
    const std::string complaint = watch.complaintAtEnd(position());
    if (complaint.empty()) return;
    services_.log.AddToLog(TelescopeName_ + " " + complaint);
    services_.messages.ShowPopupMessage(TelescopeName_ + " " + complaint, 5);
}

void TelescopeLink::AbortTelescopeSlew() {
    if (!abortsSlews() || !driver_) return;
    attempt(kAbort, [&] { call("AbortSlew"); });
}

/// Drivers of real mounts that are known to have the command are sent it, unless the operator said no.
bool TelescopeLink::abortsSlews() const {
    try {
        const std::string setting =
            services_.settings.GetSetting("Main", "AbortSlewOnStop", reachesRealMount() ? "1" : "0");
        return leadingNumber(setting) != 0;
    } catch (...) {
        // The settings' failure is told elsewhere, and a mount has to stop all the same.
        return reachesRealMount();
    }
}

bool TelescopeLink::reachesRealMount() const {
    return TelescopeProgID_.starts_with("Indi:") || TelescopeProgID_.starts_with("Alpaca:");
}

bool TelescopeLink::TelescopeMoveIsSuccessful(double ra, double dec) {
    try {
        call("SlewToCoordinatesAsync", {ra, dec});
        return true;
    } catch (...) {
        if (TelescopeProgID_ == kGemini)
            services_.log.AddToLog(
                sourcedErrorReport(currentError(), "modComponents Function TelescopeMoveIsSuccessful"));
        return false;
    }
}

std::optional<double> TelescopeLink::siteHeightIfKnown() {
    if (!reachesRealMount()) return std::nullopt;
    return numberFromMount("SiteElevation");
}

bool TelescopeLink::looksThroughAir() {
    if (!services_.state.UsingAxisSimulator) return TelescopeProgID_ != kScopeSim;
    try {
        return get("Refraction").toBool();
    } catch (...) {
        return false;
    }
}

// ---- time and site

double TelescopeLink::SiderealTime() {
    double hours = 0;
    attempt(kSiderealTime, [&] {
        const auto fromMount = numberFromMount(kSiderealTime.name);
        hours = fromMount ? *fromMount : clockSiderealTime();
    });
    return hours;
}

double TelescopeLink::clockSiderealTime() {
    const double hours =
        localMeanSiderealTime(services_.loop.clock().utc(), engine::degreesToRadians(SiteLongitude()));
    if (!std::isfinite(hours)) throw runTimeError(error_number::kInvalidProcedureCall);
    return hours;
}

double TelescopeLink::SiteLatitude() { return siteCoordinate(kSiteLatitude); }

double TelescopeLink::SiteLongitude() { return siteCoordinate(kSiteLongitude); }

/// The mount's member, the stored setting and the operation have the same name.
double TelescopeLink::siteCoordinate(const LinkOperation& operation) {
    double degrees = 0;
    attempt(operation, [&] {
        const auto fromMount = numberFromMount(operation.name);
        degrees = fromMount ? *fromMount : toNumber(services_.settings.GetMainSetting(operation.name, ""));
    });
    return degrees;
}

std::optional<double> TelescopeLink::mountLatitude() { return numberFromMount(kSiteLatitude.name); }

std::optional<double> TelescopeLink::mountLongitude() { return numberFromMount(kSiteLongitude.name); }

std::optional<double> TelescopeLink::numberFromMount(const char* member) {
    try {
        return get(member).toDouble();
    } catch (...) {
        return std::nullopt;
    }
}

// ---- the simulator's camera

void TelescopeLink::simulatorExpose() { call("Expose"); }

void TelescopeLink::simulatorSaveImage(const std::string& path) { call("SaveImageToFile", {path}); }

// ---- the driver object

void TelescopeLink::updateUsingAxisSimulator() {
    services_.state.UsingAxisSimulator = TelescopeProgID_ == kAxisSimulator;
}

bool TelescopeLink::driverIsConnected() { return get("Connected").toBool(); }

void TelescopeLink::releaseDriver() {
    if (linking_ == 0) driver_.reset();
}

// A use of the driver may let events run that release it: hold it until the use is over.
Value TelescopeLink::get(const char* member) {
    const ObjectRef driver = driver_;
    return required(driver).get(member);
}

Value TelescopeLink::call(const char* member, const Arguments& arguments) {
    const ObjectRef driver = driver_;
    return required(driver).call(member, arguments);
}

// ---- messages

void TelescopeLink::YieldPause() {
    constexpr int kYields = 150;  // one after every 1000th of 150000 steps
    for (int i = 0; i < kYields; ++i) services_.loop.yield();
}

void TelescopeLink::showLoadingMessage() { popUp(kLoading, kLoadingMessage); }

void TelescopeLink::closeLoadingMessage() { services_.messages.ClosePopupMessage(kLoading); }

void TelescopeLink::popUp(const std::string& text, double seconds) {
    services_.state.LastMessage = text;
    services_.messages.ShowPopupMessage(text, seconds);
}

template <typename Body>
void TelescopeLink::attempt(const LinkOperation& operation, Body&& body) {
    try {
        body();
    } catch (...) {
        report(operation, currentError());
    }
}

void TelescopeLink::report(const LinkOperation& operation, const OperationError& error) {
    std::string message, logged, shown;
    if (error.number() == error_number::kNoObject) {
        message = std::string("Telescope link failed: ") + operation.kind + " " + operation.name;
        logged = message;
        shown = std::string("Telescope link failed") + kCrLf + operation.hint;
    } else if (error.number() == error_number::kDriverException) {
        message = error.description();
        logged = "ASCOM Telescope: " + message;
        shown = std::string("ASCOM Telescope") + kCrLf + message;
    } else {
        message = operation.namesSource ? sourcedErrorReport(error, label(operation))
                                        : errorReport(error, label(operation));
        logged = shown = message;
    }
    services_.state.LastMessage = message;
    services_.log.AddToLog(logged);
    if (operation.popUp != PopUp::kNever)
        services_.messages.ShowPopupMessage(shown, operation.popUp == PopUp::kFiveSeconds
                                                       ? kMessageSeconds
                                                       : services_.messages.displaySeconds());
}

}  // namespace vantrel::devices
