// The lights of the window: what is going on now.
#pragma once

#include "engine/ports.h"
#include "platform/controls.h"

namespace vantrel::engine {

class Indicators {
  public:
    explicit Indicators(SettingsPort& settings) : settings_(settings) {}

    /// Switches a label on: red, or dark green with night-vision colours.
    void SetActiveColors(platform::Label& label) const;
    /// Lights a button up in the same colours.
    void SetActiveColors(platform::Button& button) const;

    static void switchOff(platform::Label& label);
    static void switchOff(platform::Button& button);

    /// True while the button is lit, in either colour.
    static bool isLit(const platform::Button& button);

  private:
    SettingsPort& settings_;
};

/// Whether "Night vision colors" are chosen.
bool nightVision(SettingsPort& settings);

}  // namespace vantrel::engine
