// A mount at an Alpaca server as an automation object.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "hosts/alpaca/device_link.h"
#include "hosts/alpaca/slew_latch.h"
#include "platform/dispatch_object.h"

namespace vantrel::hosts::alpaca {

/// Beside what a telescope driver usually has, "AbortSlew" and "Tracking". Positions are of date, whatever
/// the mount counts in: one with another equinox than that and J2000 is refused. "Connected" never waits; it
/// is what the watch saw last.
class Telescope : public platform::DispatchObject {
  public:
    Telescope(const Surroundings& surroundings, const DeviceRecord& device,
              std::function<void(const DeviceRecord&)> moved);

  private:
    enum class System { kOfDate, kJ2000 };

    void addIdentity();
    void addPosition();
    void addMotion();
    void addSite();

    void connect(bool wanted);
    System equatorialSystem();
    MountPosition position();
    std::optional<MountPosition> positionIfKnown();
    MountPosition rawPosition();
    void slew(const platform::Arguments& arguments);
    bool isSlewing();

    // Failure 438 where the mount doesn't have it.
    Json member(const std::string& name);
    bool flag(const std::string& name);
    bool flagOr(const std::string& name, bool otherwise);
    double number(const std::string& name, const char* what, double least, double most);
    std::map<std::string, Json> deviceState();

    const Surroundings& surroundings_;
    DeviceLink link_;
    System system_ = System::kOfDate;
    bool hasState_ = true;
    std::optional<SlewLatch> slew_;
};

}  // namespace vantrel::hosts::alpaca
