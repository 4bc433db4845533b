#include "app/frm_about.h"

#include "app/version.h"

namespace vantrel::app {

using platform::Words;

frmAbout::frmAbout(platform::Screen& screen)
    : Form(screen, "frmAbout", std::string("About ") + kProgramTitle, {220, 220, 420, 200}),
      lblVersion(*this, "lblVersion", "Version " + versionText()),
      lblDescription(
          *this, "lblDescription",
          Words::tr("Measures where the polar axis of a telescope mount points and guides its correction.\n"
                    "Written by the Vantrel developers.")),
      lblDisclaimer(
          *this, "lblDisclaimer",
          Words::tr("This program moves your telescope. It comes without any warranty: watch the mount "
                    "while it slews, and keep its cables and the sky around the Sun clear.")),
      cmdSysInfo(*this, "cmdSysInfo", Words::tr("System Info...")),
      cmdOK(*this, "cmdOK", "OK") {
    cmdOK.onClick = [this] { unload(); };
}

}  // namespace vantrel::app
