// The main form's set-up tab and its menus.
#pragma once

#include "platform/form.h"

namespace vantrel::app {

struct SetupPanel {
    explicit SetupPanel(platform::Form& form);

    platform::TextBox txtImagePath, txtLogPath;
    platform::Label lblImageFolder, lblLogFolder;  // where those are on this machine
    platform::Button Command1, cmdSetLogPath;      // "..." beside them
    platform::CheckBox chkSaveImages;
    platform::TextBox txtSiteLat, txtSiteLong;
    platform::CheckBox chkUseTelescopeLocation;
    platform::TextBox txtSiteHeight, txtAirPressure, txtAirTemperature;  // m, hPa, degrees C; may be empty
    platform::TextBox txtMsgDisplayTime;                                 // seconds
    platform::Button cmdTelescope, cmdLog;
    platform::MenuItem mnuSolvePicture, mnuFileExit, mnuSetOnTop, mnuSetOptions, mnuFormHelp, mnuWelcome,
        mnuAbout;
    platform::MenuItem mnuNight, mnuDimmer;
};

}  // namespace vantrel::app
