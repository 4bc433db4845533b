#include "app/frm_welcome.h"

namespace vantrel::app {

frmWelcome::frmWelcome(platform::Screen& screen)
    : Form(screen, "frmWelcome", "Welcome", {260, 140, 520, 360}),
      lblWelcome(*this, "lblWelcome", "How would you like to begin?"),
      cmdTrySimulator(*this, "cmdTrySimulator", "Try it with the simulator"),
      lblTrySimulator(*this, "lblTrySimulator",
                      "A mount and a camera that are built in: measure and correct by daylight, with nothing "
                      "connected."),
      cmdMyDevices(*this, "cmdMyDevices", "My mount and camera"),
      lblMyDevices(*this, "lblMyDevices",
                   "Choose them from the INDI and Alpaca devices in your network, first the mount, then the "
                   "camera."),
      cmdJustSolve(*this, "cmdJustSolve", "Just solve a picture"),
      lblJustSolve(*this, "lblJustSolve",
                   "Where does it point? Drop a FITS file here, or choose it in the next window.") {}

}  // namespace vantrel::app
