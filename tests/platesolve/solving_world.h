// The plate-solving room with everything around it, on virtual time, and a PinPoint that does as the test
// says.
#pragma once

#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platesolve/catalog_setup.h"
#include "platesolve/image_link_solver.h"
#include "platesolve/method_selection.h"
#include "platesolve/pinpoint_solver.h"
#include "platesolve/plate_solver.h"
#include "platesolve/solver_fields.h"
#include "platesolve/solver_tests.h"
#include "platform/class_registry.h"
#include "platform/dispatch_object.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "platform/text.h"
#include "support/journal.h"
#include "support/memory_settings_port.h"
#include "support/recording_dialogs.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"
#include "support/temp_folder.h"

namespace vantrel::test {

/// Texts that show what was asked: "hms 5.5", "dms -0.5".
struct NamingUtility : engine::UtilityPort {
    std::string HoursToHMS(double hours) override { return "hms " + platform::toText(hours); }
    std::string DegreesToDMS(double degrees) override { return "dms " + platform::toText(degrees); }
    std::string DegreesToHMS(double degrees) override { return "deg-hms " + platform::toText(degrees); }
    std::string HoursToHMS(double hours, const std::string& hourMark,
                           const std::string& minuteMark) override {
        return platform::toText(hours) + "[" + hourMark + "][" + minuteMark + "]";
    }
    std::string DegreesToDMS(double degrees, const std::string& degreeMark, const std::string& minuteMark,
                             const std::string& secondMark) override {
        return platform::toText(degrees) + "[" + degreeMark + "][" + minuteMark + "][" + secondMark + "]";
    }
    std::string HoursToHMS(double hours, int decimals) override {
        return HoursToHMS(hours) + " to " + std::to_string(decimals);
    }
    std::string DegreesToDMS(double degrees, int decimals) override {
        return DegreesToDMS(degrees) + " to " + std::to_string(decimals);
    }
    double DMSToDegrees(const std::string& text) override { return platform::toNumber(text); }
    void WaitForMilliseconds(int /*milliseconds*/) override {}
};

/// What the solver objects of a test find.
struct PinPoint {
    bool acceptsArrays = true;
    bool wcsValid = false;
    int failingSolves = 0;  // before one succeeds
    double ra = 5.51, dec = 20.25, roll = 30, scaleH = 2.5, scaleV = 2.4;
    std::function<void(const std::string& member)> whileIn;  // what else happens during a call

    int objects = 0;                          // alive now
    std::vector<double> triedRAs, triedDecs;  // where Solve was called
};

class FakeStars : public platform::DispatchObject {
  public:
    explicit FakeStars(int count) : DispatchObject("Stars") {
        property("Count", [count] { return count; });
    }
};

class FakePinPoint : public platform::DispatchObject {
  public:
    explicit FakePinPoint(PinPoint& world) : DispatchObject("PinPoint.Plate"), world_(world) {
        ++world_.objects;
        for (const char* name : {"Catalog",
                                 "CatalogExpansion",
                                 "CatalogMaximumMagnitude",
                                 "CatalogMinimumMagnitude",
                                 "CatalogPath",
                                 "MinimumBrightness",
                                 "MinimumStarSize",
                                 "SigmaAboveMean",
                                 "ExclusionBorder",
                                 "MaxSolveStars",
                                 "RightAscension",
                                 "Declination",
                                 "ArcsecPerPixelHoriz",
                                 "ArcsecPerPixelVert",
                                 "MinMatchStars",
                                 "MaxMatchResidual",
                                 "RollAngle",
                                 "Equinox",
                                 "ProjectionType",
                                 "ExposureStartTime"})
            property(
                name, [this, name] { return held_[name]; },
                [this, name](const platform::Value& value) { held_[name] = value; });
        held_["RightAscension"] = held_["Declination"] = 0.0;
        held_["ArcsecPerPixelHoriz"] = held_["ArcsecPerPixelVert"] = 1.0;
        if (world_.acceptsArrays)
            property(
                "ImageArray", [] { return platform::Value(); }, [](const platform::Value&) {});
        property("WCSValid", [this] { return world_.wcsValid; });
        property("Columns", [] { return 1200; });
        property("Rows", [] { return 1000; });
        property("targetrightascension", [] { return 6.5; });
        property("targetdeclination", [] { return -12.25; });
        property("ImageStars", [] { return stars(41); });
        property("CatalogStars", [] { return stars(57); });
        property("MatchedStars", [] { return stars(33); });
        property("MatchAvgResidual", [] { return 0.4; });
        property("MatchFitOrder", [] { return 4; });
        answer("AttachFITS", [] { return true; });
        answer("DetachFITS", [] { return true; });
        answer("ConvolveGaussian", [] { return true; });
        answer("FindImageStars", [] { return true; });
        answer("FindCatalogStars", [] { return true; });
        answer("Solve", [this] { return solve(); });
        answer("UpdateFITS", [] { return true; });
    }
    ~FakePinPoint() override { --world_.objects; }

  private:
    static platform::ObjectRef stars(int count) { return std::make_shared<FakeStars>(count); }

    void answer(const std::string& name, std::function<bool()> body) {
        method(name, [this, name, body](const platform::Arguments&) {
            if (world_.whileIn) world_.whileIn(name);
            return body();
        });
    }

    bool solve() {
        world_.triedRAs.push_back(held_["RightAscension"].toDouble());
        world_.triedDecs.push_back(held_["Declination"].toDouble());
        if (world_.failingSolves-- > 0) return false;
        held_["RightAscension"] = world_.ra;
        held_["Declination"] = world_.dec;
        held_["RollAngle"] = world_.roll;
        held_["ArcsecPerPixelHoriz"] = world_.scaleH;
        held_["ArcsecPerPixelVert"] = world_.scaleV;
        return true;
    }

    PinPoint& world_;
    std::map<std::string, platform::Value> held_;
};

/// The image that the imaging program has open.
class FakeImage : public platform::DispatchObject {
  public:
    explicit FakeImage(std::map<std::string, platform::Value> solution)
        : DispatchObject("CCDsoft.Image"), solution_(std::move(solution)) {
        indexedProperty(
            "FITSKeyword",
            [this](const platform::Arguments& arguments) {
                return keywords[argument(arguments, 0).toText()];
            },
            [this](const platform::Value& value, const platform::Arguments& arguments) {
                keywords[argument(arguments, 0).toText()] = value;
            });
        property(
            "ScaleInArcsecondsPerPixel", [this] { return scale; },
            [this](const platform::Value& value) { scale = value.toDouble(); });
        method("InsertWCS", [this](const platform::Arguments&) {
            for (const auto& [keyword, value] : solution_) keywords[keyword] = value;
            return platform::Value();
        });
    }

    std::map<std::string, platform::Value> keywords;
    double scale = 0;

  private:
    std::map<std::string, platform::Value> solution_;
};

struct SolvingWorld {
    SolvingWorld() {
        installPinPoint();
        registry.install("CCDsoft.Image", {[this] { return image; }, "", "", ""});
        form.show();
    }

    void installPinPoint() {
        registry.install("PinPoint.Plate",
                         {[this] { return std::make_shared<FakePinPoint>(engine); }, "", "", ""});
    }

    /// A file in the image folder "C:".
    void writeImage(const std::string& name) {
        const auto path = folders.real("C:\\" + name);
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "image";
    }

    /// PinPoint selected at start-up, an image to solve, everything before that forgotten.
    void preparePinPoint() {
        catalogs.restore();
        fields.restore();
        panel.optPinPoint.select();
        panel.txtCatPath.setText("C:\\Stars");
        writeImage("SavedImage.fit");
        state.ExposureRA = 5.5;
        state.ExposureDec = 20;
        state.SpiralSearchAllowed = true;
        forget();
    }

    void forget() {
        host.takeJournal("*");
        log.lines.clear();
        messages.shown.clear();
    }

    void fail(const std::string& progId, const std::string& member, long after = 0, long times = -1) {
        host.inject({progId, member, {-7, "Fake.Source", "it broke"}, std::nullopt, after, times});
    }

    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{2}};
    platform::QueuedEventLoop loop{time};
    platform::ClassRegistry registry;
    platform::RecordingHost host{registry};
    TempFolder home;
    platform::FolderMap folders{home.path()};
    MemorySettingsPort settings;
    RecordingLog log;
    RecordingMessages messages;
    RecordingDialogs dialogs;
    NamingUtility utility;
    engine::RunState state;
    PinPoint engine;
    std::shared_ptr<FakeImage> image;

    platform::Screen screen{{0, 0, 1920, 1040}};
    platform::Form form{screen, "frmMain", "", {0, 0, 600, 500}};
    platesolve::PlateSolvePanel panel{form};

    platesolve::SolveServices services{loop, host, folders, settings, log, utility, state};
    platesolve::CatalogSetup catalogs{panel, settings, dialogs};
    platesolve::PinPointSolver pinPoint{services, panel, catalogs};
    platesolve::ImageLinkSolver imageLink{
        services, panel, [this] { return image ? host.create("CCDsoft.Image") : platform::ObjectRef(); }};
    platesolve::PlateSolver solver{pinPoint, imageLink, panel, state};
    platesolve::MethodSelection selection{services, panel, pinPoint, messages};
    platesolve::SolverFields fields{panel, settings};
    platesolve::SolverTests tests{services, panel, catalogs};
};

}  // namespace vantrel::test
