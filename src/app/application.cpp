#include "app/application.h"

#include "app/handler_barrier.h"
#include "app/interlocked_controls.h"
#include "app/main_menu.h"
#include "app/parts.h"
#include "app/shutdown.h"
#include "app/start_order.h"
#include "app/startup.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::app {

struct Application::Wiring {
    explicit Wiring(Application& owner, const platform::Machine& machine)
        : application(owner),
          parts(machine),
          menu(parts),
          shutdown(parts),
          order(machine.loop, parts.log),
          barrier(parts.busy, [this](const std::string& handler) { report(handler); }) {
        connectProcedures();
        parts.interlock.setControls(interlockedControls(parts));
        connectEnd();
        putClicksOff(machine);
        for (platform::Form* form : machine.screen.forms()) barrier.guard(*form);
    }

    void connectProcedures() {
        engine::RunPanel& run = parts.main.run;
        run.cmdRun.onClick = [this] { parts.measurement.cmdRun_Click(); };
        run.cmdExpose.onClick = [this] { parts.exposures.cmdExpose_Click(); };
        platform::Button& exposeSolve = parts.main.exposures.cmdExposeSolve;
        exposeSolve.onClick = [this] { parts.exposures.cmdExposeSolve_Click(); };
        parts.main.imaging.cmdCamera.onClick = parts.machine.chooseCamera;
        order.waits(run.cmdRun, "Run");
        order.waits(run.cmdExpose, "Expose");
        order.leavesButtonsEnabled(exposeSolve, "Expose & Solve");
        order.leavesButtonsEnabled(parts.main.plateSolve.cmdTestCatPath, "Test");
    }

    /// What ends or answers a procedure is heard at once.
    void putClicksOff(const platform::Machine& machine) {
        if (machine.outsideCalls == nullptr) return;
        const engine::RunPanel& run = parts.main.run;
        barrier.putOffWhile(*machine.outsideCalls, machine.loop,
                            {&run.cmdStop, &run.cmdNext, &run.cmdSkip, &parts.adjustForm.cmdEndAdjust,
                             &parts.adjustForm.cmdMeasureAgain, &parts.main.setup.mnuFileExit},
                            [this] { return parts.state.AppUnloading; });
    }

    void connectEnd() {
        parts.main.onClose = [this] { close(); };
        parts.settings.onFailure = [this] {
            failed = true;
            close();
        };
        parts.busy.onIdle = [this] {
            if (shutdown.begun()) postFinish();
        };
    }

    void close() {
        if (shutdown.begun()) return;
        shutdown.UnloadThisApplication();
        if (!parts.busy.busy()) postFinish();
    }

    /// Another procedure may have begun by the time the handler runs; then its end posts the next one.
    void postFinish() {
        parts.machine.loop.post([this, alive = std::weak_ptr<int>(life)] {
            if (!alive.expired() && !parts.busy.busy()) finish();
        });
    }

    void finish() {
        if (shutdown.finish()) application.endedChanged.emit();
    }

    void start() {
        {
            const BusyGuard busy(parts.busy);
            if (!StartUp(parts).Form_Load()) failed = true;
            if (failed) close();
            if (!shutdown.begun()) parts.main.show();
        }
        if (failed) finish();
        offerMounts();
    }

    /// Once the window stands there.
    void offerMounts() {
        if (!parts.machine.offerMounts) return;
        parts.machine.loop.post([this, alive = std::weak_ptr<int>(life)] {
            if (alive.expired() || shutdown.begun()) return;
            const BusyGuard busy(parts.busy);
            try {
                parts.machine.offerMounts();
            } catch (...) {
                report("offerMounts");
            }
        });
    }

    /// A failure of the settings has been told already.
    void report(const std::string& handler) {
        if (parts.settings.failed()) return;
        parts.state.LastMessage = platform::errorReport(platform::currentError(), handler);
        parts.log.AddToLog(parts.state.LastMessage);
    }

    Application& application;
    Parts parts;
    MainMenu menu;
    Shutdown shutdown;
    StartOrder order;
    HandlerBarrier barrier;
    bool failed = false;
    std::shared_ptr<int> life = std::make_shared<int>(0);
};

Application::Application(const platform::Machine& machine)
    : wiring_(std::make_unique<Wiring>(*this, machine)) {}
Application::~Application() = default;

void Application::start() { wiring_->start(); }
void Application::close() { wiring_->close(); }
bool Application::ended() const { return wiring_->shutdown.through(); }
bool Application::failed() const { return wiring_->failed; }
bool Application::busy() const { return wiring_->parts.busy.busy(); }
bool Application::stopping() const {
    return wiring_->parts.state.StopRequested || wiring_->parts.state.AppUnloading;
}
correction::StarGuide& Application::starGuide() { return wiring_->parts.guide; }

platform::PictureFacts Application::pictureFacts() {
    Parts& parts = wiring_->parts;
    platform::PictureFacts facts;
    const auto stored = [&](const char* section, const char* key) -> std::optional<double> {
        const std::string text = platform::trimmed(parts.settings.GetSetting(section, key, ""));
        return text.empty() ? std::nullopt : std::optional(platform::leadingNumber(text));
    };
    if (const auto reading = parts.telescope.readingIfKnown()) facts.position = {reading->RA, reading->Dec};
    if (facts.position) facts.telescope = parts.telescope.TelescopeName();
    const auto latitude = stored("Main", "SiteLatitude"), longitude = stored("Main", "SiteLongitude");
    if (latitude && longitude) facts.site = {*latitude, *longitude};
    facts.focalLength = stored("Solve", "TelescopeFL");
    const bool inches = parts.settings.GetSetting("Solve", "FocalLengthUnits", "mm") == "in";
    if (facts.focalLength && inches) *facts.focalLength *= 25.4;
    if (facts.focalLength && !(*facts.focalLength > 0)) facts.focalLength.reset();
    return facts;
}

void Application::reportFailure(const std::string& handler) { wiring_->report(handler); }
MessageLog& Application::log() { return wiring_->parts.log; }
PopupMessages& Application::popups() { return wiring_->parts.popups; }

}  // namespace vantrel::app
