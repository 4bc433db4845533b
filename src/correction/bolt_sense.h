// Learns which way an adjuster's bolt turns: from turns that went the wrong way after the program had said
// one.
#pragma once

#include <optional>

namespace vantrel::correction {

class BoltSense {
  public:
    /// What is left to do of this adjuster and of the other one, as the last plate shows it.
    struct Look {
        double left = 0, other = 0;  // arc-minutes
        double sigma = 0;            // arc-minutes, of `left`
        bool still = false;          // nothing was turned since the plate before
        bool told = false;           // the operator reads which way to turn
    };

    /// True when the words have to be swapped: two turns in a row that were clear, and wrong. A turn ends
    /// with a plate on which nothing moves any more; one with the other adjuster says nothing.
    bool wrong(const Look& look);

    /// The words were swapped, or nothing of before holds any longer.
    void forget() { *this = {}; }

  private:
    std::optional<Look> before_;
    int wrongTurns_ = 0;
};

}  // namespace vantrel::correction
