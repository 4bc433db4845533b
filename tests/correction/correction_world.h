// The run and the correction with hand-made instruments, in virtual time: what the operator sees and does.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "correction/correction_sequence.h"
#include "correction/open_picture.h"
#include "engine/measurement_run.h"
#include "platform/class_registry.h"
#include "platform/queued_event_loop.h"
#include "platform/text.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"

namespace vantrel::correction::test {

using namespace platform;

/// A mount without errors, and the simulator's camera.
struct Mount : engine::TelescopePort {
    explicit Mount(QueuedEventLoop& eventLoop) : loop(eventLoop) {}
    double GetTelescopeRA() override { return ra; }
    double GetTelescopeDec() override { return dec; }
    void SlewToCoordinates(double toRA, double toDec) override {
        slews.push_back({toRA, toDec});
        loop.sleep(std::chrono::seconds{2});
    }
    double SiderealTime() override { return 4; }
    double SiteLatitude() override { return 45; }
    double SiteLongitude() override { return 10; }
    void AbortTelescopeSlew() override {}
    void simulatorExpose() override {
        loop.sleep(std::chrono::seconds{1});
        if (shutterStuck) throw AutomationError(5, "Sim", "Shutter stuck");
    }
    void simulatorSaveImage(const std::string& path) override { saved = path; }

    QueuedEventLoop& loop;
    double ra = 2.5, dec = 20;
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

/// Finds the image where the mount reads, or these hours and degrees off, or nothing; pixels of 3.6
/// arc-seconds.
struct Solver : engine::PlateSolverPort {
    Solver(QueuedEventLoop& eventLoop, engine::RunState& runState) : loop(eventLoop), state(runState) {}
    std::optional<engine::PlateSolution> SolvePlate(const std::string& image, double /*raOffset*/,
                                                    double /*decOffset*/) override {
        solved.push_back(image);
        searched = state.SpiralSearchAllowed;
        loop.sleep(std::chrono::seconds{1});
        state.PlateSolved = !fails && !state.StopRequested;
        if (!state.PlateSolved) return std::nullopt;
        return engine::PlateSolution{
            state.ExposureRA + raError, state.ExposureDec + decError, -0.001, 0, 0, 0.001};
    }
    bool pinPointSelected() const override { return true; }
    std::string selectedCatalog() const override { return "GSC"; }

    QueuedEventLoop& loop;
    engine::RunState& state;
    double raError = 0, decError = 0;
    bool fails = false;
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

struct NoHistory : engine::HistoryPort {
    void keep(const engine::MeasurementRecord&) override {}
};

struct NoDisplay : engine::ResultDisplayPort {
    void clearPolarPlot() override {}
    void showOffsets(const std::string&, const std::string&) override {}
    void showBadSolution() override {}
    void showEstimate(const engine::AxisEstimate&) override {}
    void PlotPolar(double, double) override {}
    void PlotError(const engine::PerPlate&, const engine::PerPlate&) override {}
};

/// The marks as texts: "rectangle 0.2", "line 500 400 510 400", "cross 510 400".
struct Marks : engine::OverlayPort {
    void CrossHair(const std::optional<engine::PixelPosition>& centre) override {
        drawn.push_back("cross " + toText(centre->x) + " " + toText(centre->y));
    }
    double DrawCenteredRectangles(double fraction) override {
        drawn.push_back("rectangle " + toText(fraction));
        return fraction;
    }
    void DrawLineOnImage(int x1, int y1, int x2, int y2) override {
        drawn.push_back("line");
        for (const int c : {x1, y1, x2, y2}) drawn.back() += " " + std::to_string(c);
    }
    std::vector<std::string> drawn;
};

struct OneStar : StarFinder {
    engine::PixelPosition FindBrightestStarOnImage() override { return place; }
    engine::PixelPosition place{500, 400};
};

/// The correction, wherever the run is built before it.
struct Guide : engine::CorrectionPort {
    void CorrectMisAlignment(double amplitude, double angle) override {
        target->CorrectMisAlignment(instead ? *instead : amplitude, angle);
    }
    CorrectionSequence* target = nullptr;
    std::optional<double> instead;  // of the measured amplitude
};

struct CorrectionWorld {
    VirtualTime time{*parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{1}};
    QueuedEventLoop loop{time};
    Screen screen{{0, 0, 1920, 1040}};
    Form form{screen, "frmMain", "Main", {}};
    engine::RunPanel panel{form};
    engine::ExposurePanel exposurePanel{form};
    engine::RunState state;
    vantrel::test::MemorySettingsPort settings;
    vantrel::test::RecordingLog log;
    vantrel::test::RecordingMessages messages;
    Mount mount{loop};
    OneCamera camera{loop, state};
    Solver solver{loop, state};
    Texts texts;
    NoDisplay display;
    NoHistory history;
    Guide guide;
    Marks overlays;
    OneStar star;
    vantrel::test::Picture frame{
        std::make_shared<ImageArray>(1000, 800, std::vector<std::uint16_t>(1000UL * 800))};
    ClassRegistry classes;
    CorrectionMarks marks;

    engine::Interlock interlock;
    engine::Services services{loop,   settings, log,     messages, mount,     camera,
                              solver, texts,    display, guide,    interlock, history};
    engine::OperatorPrompt prompt{panel, state, loop, settings, log, mount};
    engine::MeasurementRun run{panel, state, prompt, services};
    OpenImage image{classes, [] { return "MaxIm"; }};
    engine::ManualExposures exposures{exposurePanel, panel, state, services, overlays};
    StarPointing pointing{panel, state, services, exposures, overlays, image, star, marks};
    CorrectionSequence correction{panel,     exposurePanel, state,    services, prompt,
                                  exposures, overlays,      pointing, marks};

    explicit CorrectionWorld(bool simulator = false) {
        classes.install(
            "MaxIm.Application",
            {[this] { return std::make_shared<vantrel::test::FakeApplication>(frame); }, "", "", ""});
        guide.target = &correction;
        state.PlateSolveMethod = "PP";
        state.UsingAxisSimulator = simulator;
        panel.cmdRun.onClick = [this] { run.cmdRun_Click(); };
        form.show();
    }
    void pass(double seconds) { loop.sleep(Milliseconds(static_cast<long>(seconds * 1000))); }
};

}  // namespace vantrel::correction::test
