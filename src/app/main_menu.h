// The main form's menus, and the buttons that show other windows: the Welcome window's among them.
#pragma once

#include "app/parts.h"

namespace vantrel::app {

class MainMenu {
  public:
    /// Takes over the events of the menus and buttons.
    explicit MainMenu(Parts& parts);

  private:
    void mnuFormHelp_Click();
    void mnuSetOnTop_Click();
    void mnuNight_Click();
    void mnuDimmer_Click();
    void cmdSysInfo_Click();
    void cmdTrySimulator_Click();
    void cmdMyDevices_Click();
    void cmdJustSolve_Click();

    Parts& parts_;
};

}  // namespace vantrel::app
