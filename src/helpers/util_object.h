// The automation class "DriverHelper.Util": sexagesimal texts and waits.
#pragma once

#include "platform/dispatch_object.h"
#include "platform/event_loop.h"

namespace vantrel::helpers {

/// Conversions to text take the value, then optionally the delimiters after each part (the last one too) and
/// the number of decimals: HoursToHMS, DegreesToHMS, DegreesToDMS, and down to minutes HoursToHM,
/// DegreesToHM, DegreesToDM. Conversions back take any text: HMSToHours, HMSToDegrees, DMSToDegrees.
/// WaitForMilliseconds lets the program go on meanwhile.
class UtilObject : public platform::DispatchObject {
  public:
    explicit UtilObject(platform::EventLoop& loop);

  private:
    void addFormatters();
    void addParsers();
};

}  // namespace vantrel::helpers
