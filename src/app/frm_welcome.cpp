#include "app/frm_welcome.h"

namespace vantrel::app {

using platform::Words;

frmWelcome::frmWelcome(platform::Screen& screen)
    : Form(screen, "frmWelcome", Words::tr("Welcome"), {260, 140, 520, 360}),
      lblWelcome(*this, "lblWelcome", Words::tr("How would you like to begin?")),
      cmdTrySimulator(*this, "cmdTrySimulator", Words::tr("Try it with the simulator")),
      lblTrySimulator(
          *this, "lblTrySimulator",
          Words::tr("A mount and a camera that are built in: measure and correct by daylight, with nothing "
                    "connected.")),
      cmdMyDevices(*this, "cmdMyDevices", Words::tr("My mount and camera")),
      lblMyDevices(
          *this, "lblMyDevices",
          Words::tr("Choose them from the INDI and Alpaca devices in your network, first the mount, then the "
                    "camera.")),
      cmdJustSolve(*this, "cmdJustSolve", Words::tr("Just solve a picture")),
      lblJustSolve(
          *this, "lblJustSolve",
          Words::tr("Where does it point? Drop a FITS file here, or choose it in the next window.")) {}

}  // namespace vantrel::app
