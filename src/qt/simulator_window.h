// The window of the simulated mount.
#pragma once

#include "qt/form_window.h"

namespace vantrel::qt {

/// The arrow keys turn the adjusters by an arc-minute, with Shift by ten, with Ctrl by a tenth; N, S, E and W
/// are the hand controller's.
class SimulatorWindow : public FormWindow {
  public:
    SimulatorWindow(platform::Form& form, const Front& front);

  private:
    void addKeys();
};

}  // namespace vantrel::qt
