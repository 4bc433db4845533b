// The utility object: sexagesimal texts and waits.
#pragma once

#include "engine/ports.h"
#include "platform/automation.h"

namespace vantrel::devices {

/// Create the object once at start-up; while there is none every member throws run-time failure 91.
class UtilityLink : public engine::UtilityPort {
  public:
    explicit UtilityLink(platform::AutomationHost& automation) : automation_(automation) {}

    /// Throws OperationError when the object can't be created.
    void create();
    void release() { utility_.reset(); }

    std::string HoursToHMS(double hours) override;
    std::string DegreesToDMS(double degrees) override;
    std::string DegreesToHMS(double degrees) override;
    std::string HoursToHMS(double hours, const std::string& hourMark, const std::string& minuteMark) override;
    std::string DegreesToDMS(double degrees, const std::string& degreeMark, const std::string& minuteMark,
                             const std::string& secondMark) override;
    std::string HoursToHMS(double hours, int decimals) override;
    std::string DegreesToDMS(double degrees, int decimals) override;
    double DMSToDegrees(const std::string& text) override;
    void WaitForMilliseconds(int milliseconds) override;

  private:
    platform::Value call(const std::string& member, const platform::Arguments& arguments);

    platform::AutomationHost& automation_;
    platform::ObjectRef utility_;
};

}  // namespace vantrel::devices
