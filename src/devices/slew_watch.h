// Whether a slew of a real mount gets on, and whether it led where it was to lead: mounts stall, lose their
// way, and say that all is well.
#pragma once

#include <string>

#include "platform/clock.h"

namespace vantrel::devices {

class SlewWatch {
  public:
    struct Position {
        double ra = 0;   // hours
        double dec = 0;  // degrees
    };

    SlewWatch(platform::Milliseconds now, const Position& target)
        : begun_(now), lastMove_(now), target_(target) {}

    /// Of a mount that says that it slews: what is wrong with that, to follow its name. Empty: nothing.
    std::string complaint(platform::Milliseconds now, const Position& position);

    /// Of a mount that says that it has arrived.
    std::string complaintAtEnd(const Position& position) const;

  private:
    platform::Milliseconds begun_;
    platform::Milliseconds lastMove_;
    Position target_;
    Position last_;
};

}  // namespace vantrel::devices
