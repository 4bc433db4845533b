#include "engine/manual_exposures.h"

#include "engine/angles.h"
#include "engine/simulator_exposure.h"
#include "engine/sky_geometry.h"
#include "engine/waiting.h"
#include "platform/errors.h"
#include "platform/sexagesimal.h"
#include "platform/text.h"

namespace vantrel::engine {

using platform::Words;

namespace {

/// How far the picture is from where the mount says it looks; without a mount, the place alone.
Words whereItLooks(const PlateSolution& found, const EquatorialPosition& mount) {
    const std::string ra = platform::raText(found.ra, 0), dec = platform::decText(found.dec, 0);
    if (mount.Dec < -90) return Words::tr("Found at %1, %2", {ra, dec});
    const double degrees = separation({-found.ra, found.dec}, {-mount.RA, mount.Dec});
    return Words::tr("Found at %1, %2: %3 from the mount's reading", {ra, dec, shortAngle(degrees * 60)});
}

}  // namespace

ManualExposures::ManualExposures(ExposurePanel& panel, RunPanel& run, RunState& state,
                                 const Services& services, OverlayPort& overlays)
    : panel_(panel),
      run_(run),
      state_(state),
      services_(services),
      overlays_(overlays),
      indicators_(services.settings) {}

bool ManualExposures::SimpleShortExpose() {
    if (!exposeShort()) return true;
    services_.loop.yield();
    return state_.StopRequested;
}

/// False when a stop came with the camera's exposure. The simulator's image is saved as well, since nothing
/// else holds it; nobody looks for a stop right after it.
bool ManualExposures::exposeShort() {
    if (state_.UsingAxisSimulator) {
        exposeWithSimulator(services_);
        saveSimulatorImage(services_, state_, kSavedImage);
        state_.CameraFailed = false;  // it speaks of another camera
        return true;
    }
    acquire(panel_.txtContinuousExposeInterval);
    services_.loop.yield();
    if (state_.StopRequested) return false;
    services_.loop.yield();
    return true;
}

/// Takes an image for as long as the box says.
void ManualExposures::acquire(const platform::TextBox& seconds) {
    const Progress::UnderWay exposing(services_.progress,
                                      {Stage::kExpose, platform::leadingNumber(seconds.text())});
    services_.camera.AcquireImage(platform::toNumber(seconds.text()));
}

void ManualExposures::cmdExpose_Click() {
    state_.forgetStop();
    if (Indicators::isLit(run_.cmdExpose)) {
        stopSeries_ = true;
        run_.cmdExpose.setCaption("Stoping Exp.");
        return;
    }
    const Interlock::Engaged undisturbed(services_.interlock);
    lockRunButtons();
    try {
        exposeSeries();
    } catch (...) {
        reportError("mod cmdRun");
    }
    endSeries();
}

void ManualExposures::exposeSeries() {
    do {
        services_.progress.begin({});
        if (!exposeAndMark()) {
            services_.log.AddToLog("Aborted");
            return;
        }
        WaitSeconds(services_.loop,
                    platform::parseNumber(panel_.txtContinuousExposeDelay.text()).value_or(0));
    } while (!state_.AppUnloading && !stopSeries_ && !state_.CameraFailed &&
             panel_.chkExposeContinuousEnable.ticked());
}

/// False when a stop was requested.
bool ManualExposures::exposeAndMark() {
    if (!exposeShort()) return false;
    if (panel_.chkCrossHairEnable.ticked()) overlays_.CrossHair(std::nullopt);
    services_.loop.yield();
    return !state_.StopRequested;
}

void ManualExposures::lockRunButtons() {
    stopSeries_ = false;
    enabledBefore_ = {run_.cmdRun.enabled(), run_.cmdStop.enabled(), run_.cmdNext.enabled(),
                      run_.cmdSkip.enabled()};
    indicators_.SetActiveColors(run_.cmdExpose);
    run_.cmdExpose.setCaption("Stop Expose");
    for (platform::Button* button : {&run_.cmdRun, &run_.cmdStop, &run_.cmdNext, &run_.cmdSkip})
        button->setEnabled(false);
}

void ManualExposures::endSeries() {
    services_.progress.end("");
    Indicators::switchOff(run_.cmdExpose);
    run_.cmdExpose.setCaption("Expose");
    run_.cmdRun.setEnabled(enabledBefore_[0]);
    run_.cmdStop.setEnabled(enabledBefore_[1]);
    run_.cmdNext.setEnabled(enabledBefore_[2]);
    run_.cmdSkip.setEnabled(enabledBefore_[3]);
}

void ManualExposures::cmdExposeSolve_Click() {
    Words outcome;
    try {
        outcome = exposeAndSolve();
    } catch (...) {
        reportError("mod cmdExposeSolve");
    }
    services_.progress.end(outcome);
}

/// What came of it, in a line.
Words ManualExposures::exposeAndSolve() {
    state_.forgetStop();
    services_.log.AddToLog("");
    services_.log.AddToLog("** Expose & Plate Solve **");
    const double dec = services_.telescope.GetTelescopeDec();
    const double ra = NormalizeRAHours(services_.telescope.GetTelescopeRA());
    services_.progress.begin(
        {{Stage::kExpose, platform::leadingNumber(run_.txtExposeInterval.text())}, {Stage::kSolve}});
    if (state_.UsingAxisSimulator) {
        exposeWithSimulator(services_);
        saveSimulatorImage(services_, state_, kSavedImage);
    } else {
        acquire(run_.txtExposeInterval);
        services_.loop.yield();
        if (state_.StopRequested) return Words::tr("Stopped");
        services_.loop.yield();
        services_.camera.SaveImageToFile(kSavedImage);
    }
    state_.ExposureRA = ra;
    state_.ExposureDec = dec;
    state_.SpiralSearchAllowed = true;
    state_.WholeSkyAllowed = dec < -90;  // no mount tells where it points
    const auto found = solve();
    if (state_.PlateSolved) return found ? whereItLooks(*found, {.RA = ra, .Dec = dec}) : "";
    services_.log.AddToLog("Plate Solve failed");
    services_.log.AddToLog("Check Plate Solve Settings");
    return state_.WhyUnsolved.empty() ? Words::tr("No position found: check the solve settings")
                                      : state_.WhyUnsolved;
}

std::optional<PlateSolution> ManualExposures::solve() {
    const Progress::UnderWay solving(services_.progress, {Stage::kSolve});
    return services_.solver.SolvePlate(kSavedImage, 0, 0);
}

void ManualExposures::reportError(const char* label) {
    state_.LastMessage = platform::errorReport(platform::currentError(), label);
    services_.log.AddToLog(state_.LastMessage);
    services_.messages.ShowPopupMessage(state_.LastMessage, 5);
}

}  // namespace vantrel::engine
