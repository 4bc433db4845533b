// A telescope mount at an INDI server: one for all automation objects that lead to it.
//
// Positions are of date, whatever the driver counts in. Members that command wait for the driver's answer,
// those that ask don't; what goes wrong is a std::runtime_error.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hosts/equinox_conversion.h"
#include "hosts/indi/device.h"
#include "hosts/indi/surroundings.h"

namespace vantrel::hosts::indi {

struct DriverSite {
    double latitude = 0;   // degrees
    double longitude = 0;  // degrees, east positive
    double elevation = 0;  // metres above the sea
};

/// What the operator wants the driver to be told on connecting.
struct MountOptions {
    std::string port;      // "/dev/ttyUSB0"; empty: as the driver has it
    std::string baudRate;  // "9600"; empty: as the driver has it
    std::optional<DriverSite> site;
    bool setTime = false;
};

class Mount {
  public:
    /// `options` is asked at every connecting.
    Mount(Surroundings surroundings, const std::shared_ptr<Client>& client, const std::string& name,
          std::function<MountOptions()> options);

    const std::string& name() const { return device_.name(); }

    void connect();
    void disconnect() { device_.disconnect(); }
    bool connected() const { return device_.ready(); }

    MountPosition position() const;
    /// Returns when the driver has begun to slew; it goes on tracking where it arrives.
    void slewTo(const MountPosition& ofDate);
    /// Until it has arrived and said where. Throws when the slew failed.
    bool slewing() const;
    void abort();

    bool tracking() const;
    void setTracking(bool on);
    bool parked() const;
    void unpark();

    /// Local sidereal time, hours.
    double siderealTime() const;
    DriverSite site() const;

  private:
    struct Slew {
        Request request;
        platform::Milliseconds begun{0};
        platform::Milliseconds ended{0};  // left Busy; zero: not yet
    };

    platform::Milliseconds now() const { return surroundings_.loop.clock().sinceStart(); }
    platform::Milliseconds pollingPeriod() const;
    std::string coordinateProperty() const;
    const Property& coordinates() const;
    MountPosition reading() const;
    bool countsInJ2000() const;

    bool preparable() const;
    void prepare();
    bool complete() const;
    void setUp();
    void sendDue();
    void hear(const Event& event);
    void followSlew();

    Surroundings surroundings_;
    std::function<MountOptions()> options_;
    Device device_;
    MountOptions due_;  // still to be sent
    std::vector<Request> unanswered_;
    std::optional<Slew> slew_;
    platform::Subscription listening_;
};

}  // namespace vantrel::hosts::indi
