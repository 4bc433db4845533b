// What every link of the devices stands on in tests: virtual time, an automation host that records and fails
// on demand, and the rest of the program as fakes; a driver that does as the test says; the two imaging
// programs, and their windows on a desktop in memory.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "devices/camera_link.h"
#include "devices/imaging_panel.h"
#include "devices/link_services.h"
#include "devices/telescope_link.h"
#include "devices/utility_link.h"
#include "platform/class_registry.h"
#include "platform/desktop_windows.h"
#include "platform/dispatch_object.h"
#include "platform/form.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "support/journal.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"

namespace vantrel::test {

struct DeviceWorld {
    /// Forgets what happened so far.
    void forget() {
        host.takeJournal("*");
        log.lines.clear();
        messages.shown.clear();
    }
    /// From now on the member fails, `times` times (-1: for ever).
    void fail(const std::string& progId, const std::string& member, int number, long times = -1) {
        host.inject({progId, member, {number, "Fake.Source", "it broke"}, std::nullopt, 0, times});
    }
    /// From now on the member returns this.
    void answer(const std::string& progId, const std::string& member, const platform::Value& value) {
        host.inject({progId, member, {0, "", ""}, value, 0, -1});
    }
    /// The operator presses Stop when so many seconds have passed.
    [[nodiscard]] platform::TimerHandle stopAfter(double seconds) {
        return loop.after(milliseconds(seconds), [this] { state.StopRequested = true; });
    }
    void pass(double seconds) { loop.sleep(milliseconds(seconds)); }
    /// Seconds since the start.
    double elapsed() const { return static_cast<double>(time.sinceStart().count()) / 1000; }

    static platform::Milliseconds milliseconds(double seconds) {
        return platform::Milliseconds{static_cast<long>(seconds * 1000)};
    }

    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{2}};
    platform::QueuedEventLoop loop{time};
    platform::ClassRegistry registry;
    platform::RecordingHost host{registry};
    MemorySettingsPort settings;
    RecordingLog log;
    RecordingMessages messages;
    engine::RunState state;
    platform::Screen screen{{0, 0, 1920, 1040}};
    devices::LinkServices services{loop, host, settings, log, messages, state};
};

// ---- a telescope

/// What the mount behind the driver does and says.
struct Mount {
    bool connects = true;  // accepts a put of Connected
    int connections = 0;   // drivers connected at the same time, now
    int mostConnections = 0;
    double ra = 3, dec = 45;
    int slewingReads = 0;  // how often Slewing still reads True
    double siderealTime = 6, latitude = 48.25, longitude = 11.5;
    int aborts = 0;

    // A driver that takes its time with "Connected", during which other handlers run.
    std::function<void()> waitToRead, waitToPut;
    int depth = 0, deepest = 0;  // of such waits inside each other
    void wait(const std::function<void()>& how) {
        if (!how) return;
        deepest = std::max(deepest, ++depth);
        how();
        --depth;
    }
};

class FakeDriver : public platform::DispatchObject {
  public:
    FakeDriver(std::string progId, Mount& mount) : DispatchObject(std::move(progId)), mount_(mount) {
        property(
            "Connected",
            [this] {
                mount_.wait(mount_.waitToRead);
                return connected_;
            },
            [this](const platform::Value& value) {
                mount_.wait(mount_.waitToPut);
                connect(value.toBool());
            });
        property("Name", [] { return "Fake Mount"; });
        property("RightAscension", [&mount] { return mount.ra; });
        property("Declination", [&mount] { return mount.dec; });
        property("Slewing", [&mount] { return mount.slewingReads-- > 0; });
        property("SiderealTime", [&mount] { return mount.siderealTime; });
        property("SiteLatitude", [&mount] { return mount.latitude; });
        property("SiteLongitude", [&mount] { return mount.longitude; });
        method("AbortSlew", [&mount](const platform::Arguments&) {
            ++mount.aborts;
            return platform::Value();
        });
        for (const char* member : {"SlewToCoordinatesAsync", "SetupDialog", "Expose", "SaveImageToFile"})
            method(member, [](const platform::Arguments&) { return platform::Value(); });
    }
    ~FakeDriver() override { connect(false); }

  private:
    void connect(bool on) {
        if (connected_ == (on && mount_.connects)) return;
        connected_ = !connected_;
        mount_.connections += connected_ ? 1 : -1;
        mount_.mostConnections = std::max(mount_.mostConnections, mount_.connections);
    }

    Mount& mount_;
    bool connected_ = false;
};

/// The utility object: its wait lets the program's time pass, and it answers conversions with their names.
class FakeUtility : public platform::DispatchObject {
  public:
    explicit FakeUtility(platform::EventLoop& loop) : DispatchObject("DriverHelper.Util") {
        method("WaitForMilliseconds", [&loop](const platform::Arguments& arguments) {
            loop.sleep(platform::Milliseconds{argument(arguments, 0).toInt()});
            return platform::Value();
        });
        for (const char* member : {"HoursToHMS", "DegreesToDMS", "DegreesToHMS"})
            method(member, [member](const platform::Arguments&) { return member; });
        method("DMSToDegrees", [](const platform::Arguments&) { return 12.5; });
    }
};

/// The driver chooser: what the operator takes.
class FakeChooser : public platform::DispatchObject {
  public:
    explicit FakeChooser(const std::string& choice) : DispatchObject("DriverHelper.Chooser") {
        property(
            "DeviceType", [] { return ""; }, [](const platform::Value&) {});
        method("Choose", [choice](const platform::Arguments&) { return choice; });
    }
};

struct TelescopeWorld : DeviceWorld {
    TelescopeWorld() {
        for (const char* progId : {"ScopeSim.Telescope", "AxisSimulator.Telescope", "TheSky.Telescope",
                                   "GeminiTnF.Telescope", "Indi:localhost:7624/Mount"})
            registry.install(progId,
                             {[this, progId] { return std::make_shared<FakeDriver>(progId, mount); },
                              "C:\\Drivers\\driver.exe", "Telescope", std::string("Friendly ") + progId});
        registry.install("DriverHelper.Util",
                         {[this] { return std::make_shared<FakeUtility>(loop); }, "", "", ""});
        registry.install("DriverHelper.Chooser",
                         {[this] { return std::make_shared<FakeChooser>(choice); }, "", "", ""});
        utility.create();
    }

    void connect(const std::string& progId = "ScopeSim.Telescope") {
        link.setTelescopeProgID(progId);
        link.LoadTelescope();
        forget();
    }

    Mount mount;
    std::string choice = "AxisSimulator.Telescope";

    devices::frmTelescope window{screen};
    devices::UtilityLink utility{host};
    devices::TelescopeLink link{services, utility, window};
};

// ---- the two imaging programs

/// What the camera does, whoever owns it.
struct Camera {
    double readyAfter = 0;  // seconds beyond the exposure time
    bool asynchronous = true;
    bool linked = false;
};

/// A desktop that may refuse to tell of buttons.
struct SilentDesktop : platform::DesktopWindows {
    int buttonState(platform::WindowId button) const override {
        if (refuses) throw platform::runTimeError(platform::error_number::kInvalidProcedureCall);
        return DesktopWindows::buttonState(button);
    }
    bool refuses = false;
};

/// Members that can be put, and read again.
class FakeProgram : public platform::DispatchObject {
  public:
    FakeProgram(std::string progId, platform::EventLoop& loop, Camera& camera)
        : DispatchObject(std::move(progId)), loop_(loop), camera_(camera) {}

  protected:
    void values(std::initializer_list<const char*> members) {
        for (const char* member : members)
            property(
                member, [this, member] { return held_[member]; },
                [this, member](const platform::Value& value) { held_[member] = value; });
    }
    void actions(std::initializer_list<const char*> members) {
        for (const char* member : members)
            method(member, [](const platform::Arguments&) { return platform::Value(); });
    }
    void startExposure(double seconds) {
        readyAt_ = loop_.clock().sinceStart() + DeviceWorld::milliseconds(seconds + camera_.readyAfter);
    }
    bool exposureIsOver() const { return loop_.clock().sinceStart() >= readyAt_; }

    platform::EventLoop& loop_;
    Camera& camera_;
    std::map<std::string, platform::Value> held_;

  private:
    platform::Milliseconds readyAt_{0};
};

/// Its camera, which is its application as well.
class FakeMaxIm : public FakeProgram {
  public:
    FakeMaxIm(const char* progId, platform::EventLoop& loop, Camera& camera, double version)
        : FakeProgram(progId, loop, camera) {
        property("Version", [version] { return version; });
        values({"BinX", "BinY", "DisableAutoShutdown"});
        actions({"SetFullFrame", "SaveImage"});
        for (const char* member : {"MaxBinX", "MaxBinY"}) property(member, [] { return 4; });
        property("Filter", [] { return 2; });
        property(
            "LinkEnabled", [&camera] { return camera.linked; },
            [&camera](const platform::Value& value) { camera.linked = value.toBool(); });
        method("Expose", [this](const platform::Arguments& arguments) {
            startExposure(argument(arguments, 0).toDouble());
            return true;
        });
        property("ImageReady", [this] { return exposureIsOver(); });
    }
};

/// Its camera, which is its image as well.
class FakeCCDSoft : public FakeProgram {
  public:
    FakeCCDSoft(const char* progId, platform::EventLoop& loop, Camera& camera)
        : FakeProgram(progId, loop, camera) {
        values({"BinX", "BinY", "Frame", "Subframe", "ExposureTime", "AutoSaveOn", "ScreenShutter",
                "ToNewWindow", "AutoSaveFileFormat", "Series", "ImageReduction", "path"});
        actions({"abort", "AttachToActiveImager", "Save"});
        method("Connect", [&camera](const platform::Arguments&) { return camera.linked = true; });
        method("Disconnect", [&camera](const platform::Arguments&) { return camera.linked = false; });
        property("State", [&camera] { return camera.linked ? 0 : 1; });
        property(
            "Asynchronous", [&camera] { return camera.asynchronous; }, [](const platform::Value&) {});
        method("TakeImage", [this](const platform::Arguments&) {
            startExposure(held_["ExposureTime"].toDouble());
            if (!camera_.asynchronous)
                loop_.sleep(DeviceWorld::milliseconds(held_["ExposureTime"].toDouble()));
            return platform::Value();
        });
        property("IsExposureComplete", [this] { return exposureIsOver(); });
    }
};

struct ImagingWorld : DeviceWorld {
    static constexpr const char* kMaxImPath = "C:\\MaxIm\\MaxIm_DL.exe";
    static constexpr const char* kCCDSoftPath = "C:\\CCDSoft\\CCDSoft.exe";

    void installMaxIm() {
        for (const char* progId : {"MaxIm.CCDCamera", "MaxIm.Application"})
            registry.install(
                progId,
                {[this, progId] { return std::make_shared<FakeMaxIm>(progId, loop, camera, maxImVersion); },
                 kMaxImPath, "", ""});
        desktop.installProgram(kMaxImPath, {[this] { openMaxIm(); }, "4.56"});
    }
    /// The classes may be registered with another file.
    void installCCDSoft(const std::optional<std::string>& fileVersion = "5.00.73",
                        const char* registered = kCCDSoftPath) {
        for (const char* progId : {"CCDSoft.Camera", "CCDSoft.Image"})
            registry.install(progId,
                             {[this, progId] { return std::make_shared<FakeCCDSoft>(progId, loop, camera); },
                              registered, "", ""});
        desktop.installProgram(kCCDSoftPath, {[this] { openCCDSoft(); }, fileVersion});
    }

    /// Main window, camera dialog with its tabs, and the Connect button on the Setup tab.
    void openMaxIm() {
        maxImMain = desktop.open({"MaxIm DL Version 4", "Frame"});
        cameraDialog = desktop.open({"MaxIm CCD", "#32770", 0, maxImMain});
        tabs = desktop.open({"", "SysTabControl32", cameraDialog});
        setupTab = desktop.open({"Setup", "#32770", cameraDialog});
        connectButton = desktop.open({"&Connect", "Button", setupTab});
    }
    void openCCDSoft() { ccdSoftMain = desktop.open({"CCDSoft", "Frame"}); }

    Camera camera;
    double maxImVersion = 4.56;
    SilentDesktop desktop;
    platform::WindowId maxImMain = 0, cameraDialog = 0, tabs = 0, setupTab = 0, connectButton = 0,
                       ccdSoftMain = 0;

    platform::Form main{screen, "frmMain", "Vantrel", {}};
    devices::ImagingPanel panel{main};
    platform::TextBox txtPostExpDelay{main, "txtPostExpDelay", "0"};
    devices::ImagingObjects programs;
    devices::ImagingWindows windows{services, desktop, programs};
    devices::CameraLink link{services, programs, windows, {txtPostExpDelay, panel.chkUseCCDSoftSubFrame}};
};

}  // namespace vantrel::test
