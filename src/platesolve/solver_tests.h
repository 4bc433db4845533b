// The "Test Path" button: proves that PinPoint works with the chosen catalogue and folder.
#pragma once

#include <string>

#include "platesolve/catalog_setup.h"
#include "platesolve/plate_solve_panel.h"
#include "platesolve/solve_services.h"

namespace vantrel::platesolve {

/// The tests work on solver objects of their own. Everything they find goes to the log.
class SolverTests {
  public:
    SolverTests(const SolveServices& services, PlateSolvePanel& panel, const CatalogSetup& catalogs);

    /// Looks up catalogue stars around a fixed position, for the edition that takes image arrays. True when
    /// nothing failed, even if there are no stars; false also after a stop.
    bool TestCatPath();

    /// Solves the test image of the image folder, which any edition can do. True when it was solved.
    bool TestCatPath_PPLE();

  private:
    void cmdTestCatPath_Click();
    bool runTest();

    SolveServices services_;
    PlateSolvePanel& panel_;
    const CatalogSetup& catalogs_;
};

}  // namespace vantrel::platesolve
