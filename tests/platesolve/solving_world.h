// The plate-solving room with everything around it, on virtual time, and a PinPoint that does as the test
// says.
#pragma once

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platesolve/catalog_setup.h"
#include "platesolve/image_link_solver.h"
#include "platesolve/method_selection.h"
#include "platesolve/pinpoint_solver.h"
#include "platesolve/selected_solver.h"
#include "platesolve/solver_fields.h"
#include "platesolve/solver_tests.h"
#include "platform/class_registry.h"
#include "platform/errors.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "platform/text.h"
#include "support/journal.h"
#include "support/memory_settings_port.h"
#include "support/recording_dialogs.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"
#include "support/temp_folder.h"
#include "support/willing_object.h"

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
    bool wcsValid = false;                         // of the objects that are made now
    int failingSolves = 0;                         // before one succeeds
    std::optional<engine::SolutionErrors> errors;  // of a solver that tells them
    double ra = 5.51, dec = 20.25, roll = 30, scaleH = 2.5, scaleV = 2.4;
    std::function<void(const std::string& member)> whileIn;  // what else happens during a call

    int objects = 0;                          // alive now
    std::vector<double> triedRAs, triedDecs;  // where Solve was called
};

class FakePinPoint : public WillingObject {
  public:
    explicit FakePinPoint(PinPoint& world)
        : WillingObject("PinPoint.Plate", initialValues(world)), world_(world) {
        ++world_.objects;
    }
    ~FakePinPoint() override { --world_.objects; }

    void put(const std::string& member, const platform::Value& value,
             const platform::Arguments& arguments) override {
        if (member == "ImageArray" && !world_.acceptsArrays)
            throw platform::AutomationError(platform::error_number::kNoSuchMember, className(), "No arrays");
        WillingObject::put(member, value, arguments);
    }
    platform::Value call(const std::string& member, const platform::Arguments& /*arguments*/) override {
        if (world_.whileIn) world_.whileIn(member);
        return member != "Solve" || solve();
    }

  private:
    static Values initialValues(const PinPoint& world) {
        const auto stars = [](int count) {
            return platform::ObjectRef(std::make_shared<WillingObject>("Stars", Values{{"Count", count}}));
        };
        return {{"RightAscension", 0.0},
                {"Declination", 0.0},
                {"ArcsecPerPixelHoriz", 1.0},
                {"ArcsecPerPixelVert", 1.0},
                {"Columns", 1200},
                {"Rows", 1000},
                {"targetrightascension", 6.5},
                {"targetdeclination", -12.25},
                {"ImageStars", stars(41)},
                {"CatalogStars", stars(57)},
                {"MatchedStars", stars(33)},
                {"MatchAvgResidual", 0.4},
                {"MatchFitOrder", 4},
                {"WCSValid", world.wcsValid}};
    }

    bool solve() {
        world_.triedRAs.push_back(get("RightAscension").toDouble());
        world_.triedDecs.push_back(get("Declination").toDouble());
        if (world_.failingSolves-- > 0) return false;
        tell("RightAscension", world_.ra);
        tell("Declination", world_.dec);
        tell("RollAngle", world_.roll);
        tell("ArcsecPerPixelHoriz", world_.scaleH);
        tell("ArcsecPerPixelVert", world_.scaleV);
        if (world_.errors) {
            tell("MatchCentreError", world_.errors->centre);
            tell("MatchRollError", world_.errors->roll);
        }
        return true;
    }

    PinPoint& world_;
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
    std::shared_ptr<WillingObject> image;

    platform::Screen screen{{0, 0, 1920, 1040}};
    platform::Form form{screen, "frmMain", "", {0, 0, 600, 500}};
    platesolve::PlateSolvePanel panel{form};

    platesolve::SolveServices services{loop, host, folders, settings, log, utility, state};
    platesolve::CatalogSetup catalogs{panel, settings, dialogs};
    platesolve::PinPointSolver pinPoint{services, panel, catalogs};
    platesolve::ImageLinkSolver imageLink{
        services, panel, [this] { return image ? host.create("CCDsoft.Image") : platform::ObjectRef(); }};
    platesolve::SelectedSolver solver{pinPoint, imageLink, panel, state};
    platesolve::MethodSelection selection{services, panel, pinPoint, messages};
    platesolve::SolverFields fields{panel, settings};
    platesolve::SolverTests tests{services, panel, catalogs};
};

/// What makes a situation.
using Prepare = std::function<void(SolvingWorld&)>;

inline Prepare failing(const char* progId, const char* member, long after = 0) {
    return [=](SolvingWorld& world) { world.fail(progId, member, after); };
}
/// PinPoint's call doesn't succeed.
inline Prepare answeringNo(const char* member, long times = -1) {
    return [=](SolvingWorld& world) {
        world.host.inject({"PinPoint.Plate", member, {0, "", ""}, false, 0, times});
    };
}

/// Each line with its end.
inline std::string logOf(const SolvingWorld& world) {
    std::string text;
    for (const std::string& line : world.log.lines) text += line + "\n";
    return text;
}

}  // namespace vantrel::test
