// The parts of one running program, each built on the ones before it.
#pragma once

#include "app/busy_guard.h"
#include "app/camera_readings.h"
#include "app/folder_buttons.h"
#include "app/frm_about.h"
#include "app/frm_devices.h"
#include "app/frm_log.h"
#include "app/frm_main.h"
#include "app/frm_options.h"
#include "app/frm_popup_msg.h"
#include "app/frm_welcome.h"
#include "app/log_desk.h"
#include "app/measurement_history.h"
#include "app/message_log.h"
#include "app/observing_site.h"
#include "app/popup_messages.h"
#include "app/real_folders.h"
#include "app/settings_fields.h"
#include "app/settings_store.h"
#include "app/status_strip.h"
#include "correction/adjusting.h"
#include "correction/correction_sequence.h"
#include "correction/image_overlays.h"
#include "correction/open_star_finder.h"
#include "correction/past_nights.h"
#include "correction/phone_page.h"
#include "correction/plot_export.h"
#include "correction/polar_plot.h"
#include "devices/imaging_software.h"
#include "devices/telescope_desk.h"
#include "devices/utility_link.h"
#include "engine/manual_exposures.h"
#include "engine/measurement_run.h"
#include "engine/plate_review.h"
#include "engine/preflight_desk.h"
#include "platesolve/method_selection.h"
#include "platesolve/picture_desk.h"
#include "platesolve/scale_calculator.h"
#include "platesolve/selected_solver.h"
#include "platesolve/solver_fields.h"
#include "platesolve/solver_tests.h"
#include "platform/machine.h"
#include "platform/timer.h"

namespace vantrel::app {

/// The correction needs the engine's services, which in turn hand it out.
class CorrectionRelay : public engine::CorrectionPort {
  public:
    engine::CorrectionPort* target = nullptr;
    void CorrectMisAlignment(double ErrorAmplitude, double ErrorAngle) override {
        target->CorrectMisAlignment(ErrorAmplitude, ErrorAngle);
    }
};

struct Parts {
    explicit Parts(const platform::Machine& surroundings);
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    platform::Machine machine;
    engine::RunState state;
    BusyCount busy;
    SettingsStore settings;

    // Windows
    frmMain main;
    frmLog logForm;
    frmPopupMsg popupForm;
    devices::frmTelescope telescopeForm;
    devices::frmSelectCCSoftware selectForm;
    correction::frmPolarPlot polarPlotForm;
    correction::frmHistory historyForm;
    correction::frmAdjust adjustForm;
    engine::frmPlates platesForm;
    engine::frmPreflight preflightForm;
    platesolve::frmPixelScale pixelScaleForm;
    platesolve::frmSolvePicture solvePictureForm;
    frmOptions optionsForm;
    frmDevices devicesForm;
    frmAbout aboutForm;
    frmWelcome welcomeForm;
    CameraReadings cameraReadings;
    StatusStrip statusStrip;

    // What tells the operator, and what he sets
    MessageLog log;
    PopupMessages popups;
    LogDesk logWindow;
    SettingsFields fields;
    FolderButtons folderButtons;
    RealFolders realFolders;

    // Mount and camera
    devices::UtilityLink utility;
    devices::LinkServices deviceServices;
    devices::TelescopeLink telescope;
    devices::TelescopeDesk telescopeWindow;
    platform::ObjectRef profile;
    devices::ImagingObjects imagingPrograms;
    devices::ImagingWindows imagingWindows;
    devices::CameraLink camera;
    devices::ImagingSoftwareChoice imagingSoftware;
    ObservingSite site;

    // Plate solving
    platesolve::SolveServices solveServices;
    platesolve::CatalogSetup catalogs;
    platesolve::PinPointSolver pinPoint;
    platesolve::ImageLinkSolver imageLink;
    platesolve::MethodSelection methods;
    platesolve::SolverFields solverFields;
    platesolve::SolverTests solverTests;
    platesolve::SelectedSolver solver;
    platesolve::ScaleCalculator scaleCalculator;
    platesolve::PictureDesk pictureDesk;
    platform::Timer Timer1;  // the main window's

    // Measurement, exposures and correction
    correction::PolarPlot polarPlot;
    correction::PlotExport plotExport;
    CorrectionRelay correctionRelay;
    MeasurementHistory history;
    correction::PastNights pastNights;
    engine::Interlock interlock;
    engine::Progress progress;
    engine::Services services;
    engine::OperatorPrompt prompt;
    engine::PreflightDesk preflight;
    engine::PlateReview review;
    engine::MeasurementRun measurement;
    correction::OpenImage openImage;
    correction::ImageOverlays overlays;
    engine::ManualExposures exposures;
    correction::OpenStarFinder starFinder;
    correction::CorrectionMarks marks;
    correction::StarPointing pointing;
    correction::StarGuide guide;
    correction::CorrectionSequence correction;
    correction::Adjusting adjusting;
    correction::PhonePage phonePage;

    /// Of the camera in use; nothing while it isn't known.
    std::optional<int> greatestBinning() const;
    Equipment equipment() const;

    /// The start got as far as filling the fields; before that there is nothing to store or to disconnect.
    bool fieldsFilled = false;
};

}  // namespace vantrel::app
