// What the Telescope window does: its buttons, and the watch over the connection once a second.
#pragma once

#include <functional>
#include <string>

#include "devices/telescope_link.h"
#include "platform/timer.h"

namespace vantrel::devices {

class TelescopeDesk {
  public:
    /// Takes over the window's events.
    TelescopeDesk(const LinkServices& services, TelescopeLink& link, frmTelescope& window);

    /// Links the telescope when the program starts: the stored driver, or one that the operator chooses.
    void linkAtStartUp();

    /// The main window's button: shows this window and sees to it that the telescope is connected.
    void cmdTelescope_Click();

    /// As if the operator had selected this driver, without asking him. In use already, it is connected.
    void useTelescope(const std::string& progId);

    void stopTimer() { Timer1_.setEnabled(false); }

  private:
    void Form_Load();
    void Form_Unload();
    void cmdPickTelescope_Click();
    void change(const std::function<void()>& choose);
    void cmdTelescopeSetup_Click();
    void cmdConnectTelescope_Click();
    void cmdDisconnectTelescope_Click();
    void Timer1_Timer();
    void look();
    void showLinkDown();
    void showNotConnected();
    std::string storedTelescope();

    LinkServices services_;
    TelescopeLink& link_;
    frmTelescope& window_;
    platform::Timer Timer1_;
    bool looking_ = false;
};

}  // namespace vantrel::devices
