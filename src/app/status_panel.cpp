#include "app/status_panel.h"

namespace vantrel::app {

StatusPanel::StatusPanel(platform::Form& form)
    : cmdMountStatus(form, "cmdMountStatus", "No mount"),
      cmdCameraStatus(form, "cmdCameraStatus", "No camera"),
      cmdSolverStatus(form, "cmdSolverStatus", "No solver"),
      cmdSiteStatus(form, "cmdSiteStatus", "No site"),
      cmdLastMessage(form, "cmdLastMessage", "") {
    cmdMountStatus.setToolTip("Opens the telescope window");
    cmdCameraStatus.setToolTip("Opens the choice of the imaging software");
    cmdSolverStatus.setToolTip("Opens the plate solver's settings");
    cmdSiteStatus.setToolTip("Opens the observing site");
    cmdLastMessage.setToolTip("The last message: a click takes it away and opens the log");
    cmdLastMessage.setVisible(false);
}

}  // namespace vantrel::app
