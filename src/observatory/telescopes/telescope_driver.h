// What every simulated telescope driver has: the members by which programs drive a mount.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "observatory/telescopes/mount.h"
#include "platform/dispatch_object.h"
#include "platform/event_loop.h"

namespace vantrel::observatory {

/// The hardware behind all automation objects of one driver class: it stays when they are released.
struct TelescopeDevice {
    TelescopeDevice(platform::EventLoop& eventLoop, NoiseSource& noise)
        : loop(eventLoop), mount(eventLoop.clock(), noise) {}

    platform::EventLoop& loop;
    Mount mount;
    bool connected = false;
};

/// How a driver presents itself.
struct DriverIdentity {
    std::string progId;
    std::string name;
    std::string description;
};

/// Limits of a number that can be put, and its unit for the message that refuses another.
struct Range {
    double low;
    double high;
    std::string unit;
};

/// Shows the driver's own setup dialog.
using SetupDialog = std::function<void(const std::string& progId)>;

/// "RightAscension", "Declination", "SiderealTime", "Altitude", "Azimuth" and whatever moves the mount work
/// when it is connected; the site, the offsets and other settings always. Wrong wishes are driver's
/// exceptions with a text, and change nothing.
class TelescopeDriver : public platform::DispatchObject {
  public:
    TelescopeDriver(const DriverIdentity& identity, std::shared_ptr<TelescopeDevice> device,
                    SetupDialog setupDialog);

  protected:
    /// A number that programs read and put, held in `value`, which must live as long as this.
    void setting(const std::string& name, double& value, Range range);
    /// An on-off switch of the same kind.
    void setting(const std::string& name, bool& value);

    /// The value as a finite number in the range; throws std::runtime_error with a text.
    static double checked(const std::string& name, const platform::Value& value, const Range& range);

    /// Throws std::runtime_error unless connected.
    void requireConnected() const;

  private:
    void addIdentity(const DriverIdentity& identity, SetupDialog setupDialog);
    void addCapabilities();
    void addSite();
    void addPosition();
    void addMotion();
    void addParking();
    void slew(const platform::Arguments& arguments);
    static MountCounts positionFrom(const platform::Arguments& arguments);

    std::string name_;
    std::shared_ptr<TelescopeDevice> device_;
};

}  // namespace vantrel::observatory
