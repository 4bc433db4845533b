// The two imaging programs as fakes, their windows on a desktop in memory, and the links that drive them.
#pragma once

#include <memory>
#include <string>

#include "devices/camera_link.h"
#include "devices/device_world.h"
#include "devices/imaging_panel.h"
#include "platform/desktop_windows.h"
#include "platform/dispatch_object.h"

namespace vantrel::test {

/// What the camera does, whoever owns it.
struct Camera {
    double readyAfter = 0;  // seconds beyond the exposure time
    bool asynchronous = true;
    bool linked = false;
};

/// A desktop that remembers which tabs were turned to, and may refuse to tell of buttons.
struct TabbedDesktop : platform::DesktopWindows {
    void selectTab(platform::WindowId tabControl, int tab) override {
        turnedTo.push_back(tab);
        DesktopWindows::selectTab(tabControl, tab);
    }
    int buttonState(platform::WindowId button) const override {
        if (refuses) throw platform::runTimeError(platform::error_number::kInvalidProcedureCall);
        return DesktopWindows::buttonState(button);
    }
    std::vector<int> turnedTo;
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

class FakeMaxImCamera : public FakeProgram {
  public:
    FakeMaxImCamera(platform::EventLoop& loop, Camera& camera)
        : FakeProgram("MaxIm.CCDCamera", loop, camera) {
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

class FakeCCDSoftCamera : public FakeProgram {
  public:
    FakeCCDSoftCamera(platform::EventLoop& loop, Camera& camera)
        : FakeProgram("CCDSoft.Camera", loop, camera) {
        values({"BinX", "BinY", "Frame", "Subframe", "ExposureTime", "AutoSaveOn", "ScreenShutter",
                "ToNewWindow", "AutoSaveFileFormat", "Series", "ImageReduction"});
        actions({"abort"});
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

class FakeCCDSoftImage : public FakeProgram {
  public:
    FakeCCDSoftImage(platform::EventLoop& loop, Camera& camera) : FakeProgram("CCDSoft.Image", loop, camera) {
        values({"path"});
        actions({"AttachToActiveImager", "Save"});
    }
};

class FakeMaxImApplication : public FakeProgram {
  public:
    FakeMaxImApplication(platform::EventLoop& loop, Camera& camera, double version)
        : FakeProgram("MaxIm.Application", loop, camera) {
        property("Version", [version] { return version; });
    }
};

struct ImagingWorld : DeviceWorld {
    static constexpr const char* kMaxImPath = "C:\\MaxIm\\MaxIm_DL.exe";
    static constexpr const char* kCCDSoftPath = "C:\\CCDSoft\\CCDSoft.exe";

    void installMaxIm() {
        registry.install(
            "MaxIm.CCDCamera",
            {[this] { return std::make_shared<FakeMaxImCamera>(loop, camera); }, kMaxImPath, "", ""});
        registry.install(
            "MaxIm.Application",
            {[this] { return std::make_shared<FakeMaxImApplication>(loop, camera, maxImVersion); },
             kMaxImPath, "", ""});
        desktop.installProgram(kMaxImPath, {[this] { openMaxIm(); }, "4.56"});
    }
    /// The classes may be registered with another file.
    void installCCDSoft(const std::optional<std::string>& fileVersion = "5.00.73",
                        const char* registered = kCCDSoftPath) {
        registry.install(
            "CCDSoft.Camera",
            {[this] { return std::make_shared<FakeCCDSoftCamera>(loop, camera); }, registered, "", ""});
        registry.install(
            "CCDSoft.Image",
            {[this] { return std::make_shared<FakeCCDSoftImage>(loop, camera); }, registered, "", ""});
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
    TabbedDesktop desktop;
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
