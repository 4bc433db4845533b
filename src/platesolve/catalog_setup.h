// The "Reference Catalog" frame: which catalogue PinPoint matches against, and in which folder it lies. Every
// catalogue keeps a folder of its own.
#pragma once

#include "engine/ports.h"
#include "platesolve/pinpoint_catalogs.h"
#include "platesolve/plate_solve_panel.h"
#include "platform/dialogs.h"

namespace vantrel::platesolve {

class CatalogSetup {
  public:
    CatalogSetup(PlateSolvePanel& panel, engine::SettingsPort& settings, platform::Dialogs& dialogs);

    /// Fills the list and shows the stored catalogue with its folder.
    void restore();

    /// Stores the catalogue's number and its folder.
    void save();

    /// PinPoint's number of the chosen catalogue.
    int PinPointCatalog() const { return PinPointCatalog_; }

  private:
    void cmbppCat_Click();
    void cmdSetDir_Click();
    void showFolder();
    void setCatpath();

    PlateSolvePanel& panel_;
    engine::SettingsPort& settings_;
    platform::Dialogs& dialogs_;
    int PinPointCatalog_ = kDefaultCatalog;
};

}  // namespace vantrel::platesolve
