#include "app/parts.h"

#include <algorithm>
#include <exception>

#include "platform/whole_file.h"

namespace vantrel::app {
namespace {

std::optional<std::string> horizonText(const std::filesystem::path& file) {
    constexpr std::size_t kMost = 1 << 20;
    try {
        return platform::contentsOf(file, kMost);
    } catch (const std::exception&) {
        return std::nullopt;  // the desk says so
    }
}

}  // namespace

Parts::Parts(const platform::Machine& surroundings)
    : machine(surroundings),
      settings(machine.settings, machine.dialogs),
      main(machine.screen),
      logForm(machine.screen),
      popupForm(machine.screen),
      telescopeForm(machine.screen),
      selectForm(machine.screen),
      polarPlotForm(machine.screen),
      historyForm(machine.screen),
      adjustForm(machine.screen),
      platesForm(machine.screen),
      preflightForm(machine.screen),
      pixelScaleForm(machine.screen),
      solvePictureForm(machine.screen),
      optionsForm(machine.screen, settings),
      devicesForm(machine.screen, settings),
      aboutForm(machine.screen),
      welcomeForm(machine.screen),
      cameraReadings(devicesForm, machine.camera),
      statusStrip(main.status),
      log(machine.loop.clock(), machine.folders, logForm),
      popups(machine.loop, settings, log, state, popupForm, main.setup.txtMsgDisplayTime),
      logWindow(logForm, main, settings, log),
      fields(main, settings, log, state),
      folderButtons(main.setup, machine.dialogs, settings, log, popups),
      realFolders(main.setup, machine.folders),
      utility(machine.automation),
      deviceServices{machine.loop, machine.automation, settings, log, popups, state},
      telescope(deviceServices, utility, telescopeForm),
      telescopeWindow(deviceServices, telescope, telescopeForm),
      imagingWindows(deviceServices, machine.windows, imagingPrograms),
      camera(deviceServices, imagingPrograms, imagingWindows,
             {main.run.txtPostExpDelay, main.imaging.chkUseCCDSoftSubFrame}),
      imagingSoftware(
          deviceServices, machine.windows, imagingPrograms, imagingWindows, camera,
          {main.imaging, main.run.cmdExpose, main.plateSolve.optPinPoint, main.plateSolve.optAutoAstrometry},
          selectForm),
      site(main.setup, settings, log, popups, utility, state,
           {[this] { return telescope.mountLatitude(); }, [this] { return telescope.mountLongitude(); }}),
      solveServices{machine.loop, machine.automation, machine.folders, settings, log, utility, state},
      catalogs(main.plateSolve, settings, machine.dialogs),
      pinPoint(solveServices, main.plateSolve, catalogs),
      imageLink(solveServices, main.plateSolve, [this] { return imagingPrograms.ccdSoftImage; }),
      methods(solveServices, main.plateSolve, pinPoint, popups),
      solverFields(main.plateSolve, settings),
      solverTests(solveServices, main.plateSolve, catalogs),
      solver(pinPoint, imageLink, main.plateSolve, state),
      scaleCalculator(pixelScaleForm, main.plateSolve, settings, log, [this] { return greatestBinning(); }),
      pictureDesk(solvePictureForm, machine.pictureSolver, machine.dialogs, machine.loop.clock()),
      Timer1(machine.loop, platform::Milliseconds{1000}),
      polarPlot(machine.loop, settings, log, telescope, polarPlotForm, main.errorPlot, main.result),
      plotExport(polarPlotForm, machine.desktop, machine.folders, machine.loop.clock(), settings, log),
      history(machine.loop.clock(), machine.folders, settings, log,
              [this] { return telescope.TelescopeName(); }),
      pastNights(historyForm, [this] { return history.past(); }),
      progress(main.run, state, machine.loop),
      services{machine.loop, settings,        log,       popups,  telescope, camera, solver, utility,
               polarPlot,    correctionRelay, interlock, history, progress},
      prompt(main.run, state, machine.loop, settings, log, telescope),
      preflight(preflightForm, main.run, state, services,
                [this](const std::string& path) { return horizonText(machine.folders.real(path)); }),
      review(platesForm, services),
      measurement(main.run, state, prompt, preflight, review, services),
      openImage(machine.automation, [this] { return imagingPrograms.ImagingSoftware; }),
      overlays(openImage, settings, log),
      exposures(main.exposures, main.run, state, services, overlays),
      starFinder(openImage, log, popups),
      pointing(main.run, state, services, exposures, overlays, openImage, starFinder, marks),
      guide(main.guidance, openImage, [this] { machine.desktop.beep(); }),
      correction(main.run, main.exposures, state, services, prompt, exposures, overlays, pointing, marks,
                 guide),
      adjusting(
          adjustForm, main.run, state, services, [this] { return polarPlot.tolerance(); },
          [this] { machine.desktop.beep(); },
          [this](const std::string& words) { machine.desktop.say(words); }),
      phonePage(adjustForm, main.run.cmdStop, machine.loop, settings, log, machine.pages) {
    measurement.adjustLive = [this](const engine::AxisEstimate& measured) {
        return adjusting.adjust(measured);
    };
    correctionRelay.target = &correction;
    optionsForm.onPicturesChanged = [this] { polarPlot.followTolerance(); };
    polarPlot.history = [this] { return history.past(); };
    polarPlot.onPlotted = [this] { pastNights.refresh(); };
    polarPlotForm.cmdHistory.onClick = [this] { historyForm.show(); };
    polarPlotForm.cmdPlates.onClick = [this] { platesForm.show(); };
    Timer1.onTick = [this] {
        scaleCalculator.recompute();
        cameraReadings.show();
        statusStrip.show(equipment());
    };
    popups.onShown = [this](const std::string& text) {
        statusStrip.show(equipment());
        statusStrip.keep(text);
    };
    popups.onTakenBack = [this] { statusStrip.takeBack(); };
    devicesForm.onCameraChanged = [this] {
        if (machine.adjustCamera) machine.adjustCamera();
        cameraReadings.show();
    };
}

std::optional<int> Parts::greatestBinning() const {
    if (!imagingPrograms.usesBuiltIn() || !machine.camera) return std::nullopt;
    const platform::CameraHardware& camera = machine.camera();
    if (!camera.connected()) return std::nullopt;
    return std::min(camera.facts().maxBinX, camera.facts().maxBinY);
}

Equipment Parts::equipment() const {
    const std::string& software = imagingPrograms.ImagingSoftware;
    const bool cameraHeld = imagingPrograms.maxImCamera || imagingPrograms.ccdSoftCamera ||
                            (imagingPrograms.builtInCamera && machine.camera && machine.camera().connected());
    return {.mount = telescope.holdsDriver() ? Readiness::kReady : Readiness::kMissing,
            .mountChosen = !telescope.TelescopeProgID().empty(),
            .camera = !cameraHeld          ? Readiness::kMissing
                      : state.CameraFailed ? Readiness::kTrouble
                                           : Readiness::kReady,
            .cameraChosen = !software.empty() && software != "NeedToSelect",
            .solver = !state.PlateSolveMethod.empty(),
            .site = !main.setup.txtSiteLat.text().empty() && !main.setup.txtSiteLong.text().empty()};
}

}  // namespace vantrel::app
