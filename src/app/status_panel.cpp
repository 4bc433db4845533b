#include "app/status_panel.h"

namespace vantrel::app {

using platform::Words;

StatusPanel::StatusPanel(platform::Form& form)
    : cmdMountStatus(form, "cmdMountStatus", Words::tr("No mount")),
      cmdCameraStatus(form, "cmdCameraStatus", Words::tr("No camera")),
      cmdSolverStatus(form, "cmdSolverStatus", Words::tr("No solver")),
      cmdSiteStatus(form, "cmdSiteStatus", Words::tr("No site")),
      cmdLastMessage(form, "cmdLastMessage", "") {
    cmdMountStatus.setToolTip(Words::tr("Opens the telescope window"));
    cmdCameraStatus.setToolTip(Words::tr("Opens the choice of the imaging software"));
    cmdSolverStatus.setToolTip(Words::tr("Opens the plate solver's settings"));
    cmdSiteStatus.setToolTip(Words::tr("Opens the observing site"));
    cmdLastMessage.setToolTip(Words::tr("The last message: a click takes it away and opens the log"));
    cmdLastMessage.setVisible(false);
}

}  // namespace vantrel::app
