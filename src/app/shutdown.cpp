#include "app/shutdown.h"

#include <vector>

#include "app/stored_position.h"
#include "platform/errors.h"

namespace vantrel::app {

void Shutdown::UnloadThisApplication() {
    if (begun_) return;
    begun_ = true;
    parts_.state.AppUnloading = true;
    parts_.camera.abortExposure();
    parts_.state.StopRequested = true;
    parts_.telescope.AbortTelescopeSlew();
    parts_.machine.loop.setEnding(true);
    setSilent(true);
}

bool Shutdown::finish() {
    if (finishing_) return false;
    finishing_ = true;
    setSilent(false);
    using Step = void (Shutdown::*)();
    for (const Step step : {&Shutdown::saveEverything, &Shutdown::leaveImagingProgram,
                            &Shutdown::disconnectTelescope, &Shutdown::UnloadAll, &Shutdown::AppQuit}) {
        try {
            (this->*step)();
        } catch (...) {
            // The shutdown always completes; what a step has to say it has said by itself.
        }
    }
    parts_.machine.loop.setEnding(false);
    through_ = true;
    return true;
}

void Shutdown::setSilent(bool silent) {
    parts_.log.setSilent(silent);
    parts_.popups.setSilent(silent);
}

void Shutdown::saveEverything() {
    if (!parts_.fieldsFilled) return;
    savePosition(parts_.main, parts_.settings, "Main");
    parts_.fields.store();
    parts_.methods.save();
    parts_.solverFields.save();
    parts_.catalogs.save();
}

void Shutdown::leaveImagingProgram() { parts_.camera.setCamDisableAutoShutdown(true); }

void Shutdown::disconnectTelescope() {
    if (!parts_.fieldsFilled) return;
    parts_.telescope.AbortTelescopeSlew();
    parts_.telescope.DisconnectTelescope();
}

void Shutdown::UnloadAll() {
    parts_.Timer1.setEnabled(false);
    parts_.telescopeWindow.stopTimer();
    parts_.popups.stopTimer();
    parts_.polarPlot.Timer1().setEnabled(false);
    const std::vector<platform::Form*> forms = parts_.machine.screen.forms();
    for (platform::Form* form : forms)
        if (form != &parts_.main) form->unload();
    parts_.main.unload();
}

void Shutdown::AppQuit() {
    parts_.log.release();
    parts_.openImage.release();
    parts_.imagingPrograms.releaseObjects();
    parts_.pinPoint.releasePinPointPlate();
    parts_.telescope.releaseDriver();
    parts_.utility.release();
    parts_.profile.reset();
}

}  // namespace vantrel::app
