// The engine's procedures with hand-made instruments, in virtual time: a measurement takes milliseconds.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/measurement_run.h"
#include "platform/automation.h"
#include "platform/queued_event_loop.h"
#include "platform/text.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"

namespace vantrel::test {

using platform::formatNumber;
using platform::QueuedEventLoop;
using platform::toNumber;

/// A mount without errors, and the simulator's camera.
struct Mount : engine::TelescopePort {
    explicit Mount(QueuedEventLoop& eventLoop) : loop(eventLoop) {}
    double GetTelescopeRA() override { return ra; }
    double GetTelescopeDec() override { return dec; }
    void SlewToCoordinates(double toRA, double toDec) override {
        slews.push_back({toRA, toDec});
        loop.sleep(std::chrono::seconds{2});
    }
    double SiderealTime() override { return lst; }
    double SiteLatitude() override { return 45; }
    double SiteLongitude() override { return 10; }
    void AbortTelescopeSlew() override {}
    void simulatorExpose() override {
        loop.sleep(std::chrono::seconds{1});
        if (shutterStuck) throw platform::AutomationError(5, "Sim", "Shutter stuck");
    }
    void simulatorSaveImage(const std::string& path) override { saved = path; }

    QueuedEventLoop& loop;
    double ra = 2.5, dec = 20, lst = 4;  // it forgets where it was sent
    std::vector<engine::EquatorialPosition> slews;
    bool shutterStuck = false;
    std::string saved;
};

/// Forgets an earlier stop when an exposure begins, as cameras here do.
struct OneCamera : engine::CameraPort {
    OneCamera(QueuedEventLoop& eventLoop, engine::RunState& runState) : loop(eventLoop), state(runState) {}
    void AcquireImage(double seconds) override {
        state.StopRequested = false;
        state.CameraFailed = false;
        exposures.push_back(seconds);
        loop.sleep(std::chrono::seconds{1});
        state.CameraFailed = fails;
        fails = false;
    }
    void SaveImageToFile(const std::string& fileName) override { saved = fileName; }

    QueuedEventLoop& loop;
    engine::RunState& state;
    bool fails = false;
    std::vector<double> exposures;
    std::string saved;
};

/// Finds the image where the sky says that a telescope looks that was sent there, without one where the mount
/// reads or these hours and degrees off; or nothing. Pixels of 3.6 arc-seconds.
struct Solver : engine::PlateSolverPort {
    Solver(QueuedEventLoop& eventLoop, engine::RunState& runState) : loop(eventLoop), state(runState) {}
    std::optional<engine::PlateSolution> SolvePlate(const std::string& image, double /*raOffset*/,
                                                    double /*decOffset*/) override {
        solved.push_back(image);
        searched = state.SpiralSearchAllowed;
        loop.sleep(std::chrono::seconds{1});
        const bool clouded = clouds.contains(static_cast<int>(solved.size()));
        state.PlateSolved = !fails && !clouded && !state.StopRequested;
        if (!state.PlateSolved) return std::nullopt;
        if (sky) return sky({.RA = state.ExposureRA, .Dec = state.ExposureDec});
        return engine::PlateSolution{
            state.ExposureRA + raError, state.ExposureDec + decError, -0.001, 0, 0, 0.001};
    }
    bool pinPointSelected() const override { return true; }
    std::string selectedCatalog() const override { return "GSC"; }

    QueuedEventLoop& loop;
    engine::RunState& state;
    double raError = 0, decError = 0;
    std::function<engine::PlateSolution(const engine::EquatorialPosition& sentTo)> sky;
    bool fails = false;
    std::set<int> clouds;  // which solves find nothing, from 1
    bool searched = false;
    std::vector<std::string> solved;
};

struct Texts : engine::UtilityPort {
    std::string HoursToHMS(double hours) override { return formatNumber(hours, "0.000") + "h"; }
    std::string DegreesToDMS(double degrees) override { return formatNumber(degrees, "0.000") + "d"; }
    std::string DegreesToHMS(double degrees) override { return formatNumber(degrees / 15, "0.000") + "h"; }
    std::string HoursToHMS(double hours, const std::string&, const std::string&) override {
        return HoursToHMS(hours);
    }
    std::string DegreesToDMS(double degrees, const std::string&, const std::string&,
                             const std::string&) override {
        return DegreesToDMS(degrees);
    }
    std::string HoursToHMS(double hours, int) override { return HoursToHMS(hours); }
    std::string DegreesToDMS(double degrees, int) override { return DegreesToDMS(degrees); }
    double DMSToDegrees(const std::string& text) override { return toNumber(text); }
    void WaitForMilliseconds(int) override {}
};

struct RecordingHistory : engine::HistoryPort {
    void keep(const engine::MeasurementRecord& record) override { records.push_back(record); }
    std::vector<engine::MeasurementRecord> records;
};

struct RecordingDisplay : engine::ResultDisplayPort {
    void clearPolarPlot() override {}
    void showOffsets(const std::string&, const std::string&) override {}
    void showBadSolution() override {}
    void showCheck(const engine::AxisCheck&, const engine::Site&, bool) override {}
    void PlotPolar(double ErrorAmplitude, double ErrorAngle) override {
        amplitude = ErrorAmplitude;
        angle = ErrorAngle;
    }
    void PlotError(const engine::PerPlate& plateRAs, const engine::PerPlate&) override {
        plates = plateRAs.size();
    }
    double amplitude = 0, angle = 0;
    std::size_t plates = 0;
};

/// What would be corrected: amplitude and angle in degrees.
struct NotedCorrection : engine::CorrectionPort {
    void CorrectMisAlignment(double amplitude, double angle) override { noted = {{amplitude, angle}}; }
    std::optional<std::pair<double, double>> noted;
};

/// A measurement is ready to begin; who corrects may be told from outside.
struct EngineWorld {
    NotedCorrection corrected;
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{1}};
    QueuedEventLoop loop{time};
    platform::Screen screen{{0, 0, 1920, 1040}};
    platform::Form form{screen, "frmMain", "Main", {}};
    engine::RunPanel panel{form};
    engine::RunState state;
    MemorySettingsPort settings;
    RecordingLog log;
    RecordingMessages messages;
    Mount mount{loop};
    OneCamera camera{loop, state};
    Solver solver{loop, state};
    Texts texts;
    RecordingDisplay display;
    RecordingHistory history;
    engine::Interlock interlock;
    engine::Progress progress{panel, state, loop};
    engine::Services services;
    engine::OperatorPrompt prompt{panel, state, loop, settings, log, mount};
    engine::frmPreflight preflightForm{screen};
    std::map<std::string, std::string> files;
    engine::PreflightDesk preflight{preflightForm, panel, state, services,
                                    [this](const std::string& path) { return textOf(path); }};
    engine::frmPlates plates{screen};
    engine::PlateReview review{plates, services};
    engine::MeasurementRun run{panel, state, prompt, preflight, review, services};

    EngineWorld() : EngineWorld(corrected) {}
    explicit EngineWorld(engine::CorrectionPort& correction)
        : services{loop,  settings, log,        messages,  mount,   camera,  solver,
                   texts, display,  correction, interlock, history, progress} {
        state.PlateSolveMethod = "PP";
        panel.cmdRun.onClick = [this] { run.cmdRun_Click(); };
        form.show();
    }
    std::optional<std::string> textOf(const std::string& path) const {
        const auto file = files.find(path);
        return file == files.end() ? std::nullopt : std::optional(file->second);
    }
    void pass(double seconds) { loop.sleep(platform::Milliseconds(static_cast<long>(seconds * 1000))); }
    std::string enabledButtons() const {
        std::string names;
        for (const platform::Button* button :
             {&panel.cmdRun, &panel.cmdStop, &panel.cmdNext, &panel.cmdSkip, &panel.cmdExpose})
            if (button->enabled()) names += (names.empty() ? "" : " ") + button->name().substr(3);
        return names;
    }
};

}  // namespace vantrel::test
