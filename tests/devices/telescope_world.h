// A telescope link with everything around it, on virtual time, and a driver that does as the test says.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "devices/device_world.h"
#include "devices/telescope_link.h"
#include "devices/utility_link.h"
#include "platform/dispatch_object.h"

namespace vantrel::test {

/// What the mount behind the driver does and says.
struct Mount {
    bool connects = true;  // accepts a put of Connected
    int connections = 0;   // drivers connected at the same time, now
    int mostConnections = 0;
    int drivers = 0;  // driver objects, now
    int mostDrivers = 0;
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
        mount_.mostDrivers = std::max(mount_.mostDrivers, ++mount_.drivers);
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
    ~FakeDriver() override {
        connect(false);
        --mount_.drivers;
    }

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

/// The utility object; its wait lets the program's time pass.
class FakeUtility : public platform::DispatchObject {
  public:
    explicit FakeUtility(platform::EventLoop& loop) : DispatchObject("DriverHelper.Util") {
        method("WaitForMilliseconds", [&loop](const platform::Arguments& arguments) {
            loop.sleep(platform::Milliseconds{argument(arguments, 0).toInt()});
            return platform::Value();
        });
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

}  // namespace vantrel::test
