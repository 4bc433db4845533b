#include "app/setup_panel.h"

namespace vantrel::app {

SetupPanel::SetupPanel(platform::Form& form)
    : txtImagePath(form, "txtImagePath"),
      txtLogPath(form, "txtLogPath"),
      lblImageFolder(form, "lblImageFolder", ""),
      lblLogFolder(form, "lblLogFolder", ""),
      Command1(form, "Command1", "..."),
      cmdSetLogPath(form, "cmdSetLogPath", "..."),
      chkSaveImages(form, "chkSaveImages", "Save images"),
      txtSiteLat(form, "txtSiteLat"),
      txtSiteLong(form, "txtSiteLong"),
      chkUseTelescopeLocation(form, "chkUseTelescopeLocation", "Use telescope"),
      txtSiteHeight(form, "txtSiteHeight"),
      txtAirPressure(form, "txtAirPressure"),
      txtAirTemperature(form, "txtAirTemperature"),
      txtMsgDisplayTime(form, "txtMsgDisplayTime", "3"),
      cmdTelescope(form, "cmdTelescope", "Tele- scope"),
      cmdLog(form, "cmdLog", "Log"),
      mnuSolvePicture(form, "mnuSolvePicture", "Solve a Picture..."),
      mnuFileExit(form, "mnuFileExit", "Exit"),
      mnuSetOnTop(form, "mnuSetOnTop", "OnTop"),
      mnuSetOptions(form, "mnuSetOptions", "Options"),
      mnuFormHelp(form, "mnuFormHelp", "Help"),
      mnuWelcome(form, "mnuWelcome", "Welcome"),
      mnuAbout(form, "mnuAbout", "About"),
      mnuNight(form, "mnuNight", "Night Colors"),
      mnuDimmer(form, "mnuDimmer", "Dimmer by Night") {
    txtSiteLat.setToolTip(" xxd xxm xx.xs  N = + / S = -");
    for (platform::TextBox* box : {&txtSiteHeight, &txtAirPressure, &txtAirTemperature})
        box->setToolTip("For the refraction; empty: the standard atmosphere");
    txtSiteLong.setToolTip(" xxd xxm xx.xs  E =+ / W= -");
}

}  // namespace vantrel::app
