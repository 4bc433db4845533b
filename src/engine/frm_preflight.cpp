#include "engine/frm_preflight.h"

namespace vantrel::engine {

frmPreflight::frmPreflight(platform::Screen& screen)
    : Form(screen, "frmPreflight", "Before the Slew", {140, 100, 640, 420}),
      picSky(*this, "picSky"),
      txtForecast(*this, "txtForecast"),
      txtLowest(*this, "txtLowest", "15"),
      txtHorizon(*this, "txtHorizon"),
      cmdLook(*this, "cmdLook", "Look"),
      txtProposal(*this, "txtProposal"),
      cmdSlewThere(*this, "cmdSlewThere", "Slew there"),
      cmdOK(*this, "cmdOK", "OK") {
    txtForecast.setReadOnly(true);
    txtProposal.setReadOnly(true);
    cmdSlewThere.setEnabled(false);
    txtLowest.setToolTip("Plates lower than this are warned of, in degrees");
    txtHorizon.setToolTip(
        "A file with a line \"azimuth altitude\" for each point of the horizon, in degrees");
    cmdLook.setToolTip("Reads where the telescope points, and looks ahead again");
    cmdOK.onClick = [this] { unload(); };
}

}  // namespace vantrel::engine
