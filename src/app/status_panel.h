// The main form's status strip: a lamp and a word for each of the things that a measurement needs, and the
// last message.
#pragma once

#include "platform/form.h"

namespace vantrel::app {

struct StatusPanel {
    explicit StatusPanel(platform::Form& form);

    platform::Button cmdMountStatus, cmdCameraStatus, cmdSolverStatus, cmdSiteStatus;
    platform::Button cmdLastMessage;  // shown while there is one
};

}  // namespace vantrel::app
