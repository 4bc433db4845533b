// The main window: its parts are the panels that the subsystems act on.
#pragma once

#include "app/setup_panel.h"
#include "app/status_panel.h"
#include "correction/error_plot_panel.h"
#include "correction/guidance_panel.h"
#include "correction/result_panel.h"
#include "devices/imaging_panel.h"
#include "engine/exposure_panel.h"
#include "engine/run_panel.h"
#include "platesolve/plate_solve_panel.h"
#include "platform/form.h"

namespace vantrel::app {

class frmMain : public platform::Form {
  public:
    explicit frmMain(platform::Screen& screen)
        : Form(screen, "frmMain", "Vantrel", {60, 60, 620, 560}),
          run(*this),
          exposures(*this),
          plateSolve(*this),
          imaging(*this),
          errorPlot(*this),
          result(*this),
          guidance(*this),
          setup(*this),
          status(*this) {}

    engine::RunPanel run;
    engine::ExposurePanel exposures;
    platesolve::PlateSolvePanel plateSolve;
    devices::ImagingPanel imaging;
    correction::ErrorPlotPanel errorPlot;
    correction::ResultPanel result;
    correction::GuidancePanel guidance;
    SetupPanel setup;
    StatusPanel status;

    enum class Page { kRun, kSetUp, kPlateSolve };
    /// Something on this page is to be seen to.
    platform::Signal<Page> pageWanted;
};

}  // namespace vantrel::app
