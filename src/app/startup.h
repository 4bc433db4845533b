// How the program starts.
#pragma once

#include <string>

#include "app/parts.h"
#include "platform/instance_guard.h"

namespace vantrel::app {

/// Before anything else: false when another instance runs, which the operator is told and whose window comes
/// to the front. The guard has to live as long as the program.
bool mayStart(platform::InstanceGuard& guard, platform::Dialogs& dialogs);

/// The sequence that brings settings, folders, log, imaging program and telescope into a usable state.
class StartUp {
  public:
    explicit StartUp(Parts& parts) : parts_(parts), setup_(parts.main.setup) {}

    /// False when the program has to end at once: the operator has been told why. A step that fails is logged
    /// and the others go on; when the program is closed meanwhile, the rest is left out.
    bool Form_Load();

  private:
    bool load();
    bool ASCOMPlatformIsInstalled();
    void tellThatPlatformIsMissing();
    void chooseFolders();
    void showLog();
    void fillFields();
    void placeMainWindow();
    void openProfile();
    void checkSite();

    Parts& parts_;
    SetupPanel& setup_;
};

}  // namespace vantrel::app
