#include "platesolve/solver_tests.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "platesolve/pinpoint_probe.h"
#include "platform/image_array.h"
#include "platform/sexagesimal.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;

namespace {

/// Runs steps one after the other whatever happens; a failing one is logged and remembered.
class Steps {
  public:
    explicit Steps(engine::LogPort& log) : log_(log) {}

    template <typename Step>
    void operator()(Step&& step) {
        try {
            step();
        } catch (const OperationError& error) {
            failed_ = true;
            lastError_ = error.description();
            log_.AddToLog(error.source() + " error: " + error.description() + " (" +
                          std::to_string(error.number()) + ")");
        }
    }

    bool failed() const { return failed_; }
    /// Description of the last failure; empty when there was none.
    const std::string& lastError() const { return lastError_; }

  private:
    engine::LogPort& log_;
    bool failed_ = false;
    std::string lastError_;
};

/// A call that raises an error simply didn't succeed.
bool succeeds(AutomationObject& plate, const char* member, const Arguments& arguments = {}) {
    try {
        return plate.call(member, arguments).toBool();
    } catch (const OperationError&) {
        return false;
    }
}

bool attach(AutomationObject& plate, const std::string& path) {
    if (succeeds(plate, "AttachFITS", {path})) return true;
    succeeds(plate, "DetachFITS");
    return succeeds(plate, "AttachFITS", {path});
}

double numberOrZero(AutomationObject& plate, const char* member) {
    try {
        return plate.get(member).toDouble();
    } catch (const OperationError&) {
        return 0;
    }
}

std::string count(AutomationObject& plate, const char* collection) {
    return required(plate.get(collection).toObject()).get("Count").toText();
}

std::string fixed(AutomationObject& plate, const char* member, const char* pattern) {
    return formatNumber(plate.get(member).toDouble(), pattern);
}

/// Local time as automation programs count it: days since 30 December 1899.
double automationDate(Instant instant) {
    using namespace std::chrono;
    const CivilTime now = civilLocal(instant);
    const sys_days today{year{now.year} / now.month / now.day};
    const sys_days zero{year{1899} / 12 / 30};
    const auto ofDay = hours{now.hour} + minutes{now.minute} + seconds{now.second};
    return duration<double, days::period>(today - zero + ofDay).count();
}

ImageRef syntheticImage(int size) {
    const auto side = static_cast<std::size_t>(size);
    return std::make_shared<const ImageArray>(side, side, std::vector<std::int32_t>(side * side, 1));
}

struct MagnitudeRange {
    double brightest, faintest;
};

/// What the catalogue holds; nothing where PinPoint's own limits are to stand.
std::optional<MagnitudeRange> magnitudesOf(int catalog) {
    switch (catalog) {
        case 0:
        case 3:
        case 4:
        case 6:
            return MagnitudeRange{-2, 20};
        case 1:
        case 5:
            return MagnitudeRange{-2, 15};
        default:
            return std::nullopt;
    }
}

struct Position {
    double ra, dec;  // hours, degrees
};

void sendTestParameters(AutomationObject& plate, Steps& step, int catalog, const std::string& catalogPath,
                        const Position& target) {
    constexpr double kTestImageScale = 1.7;  // arc-seconds per pixel
    const auto put = [&](const char* member, const Value& value) { step([&] { plate.put(member, value); }); };
    put("Catalog", catalog);
    put("CatalogPath", catalogPath);
    if (const auto magnitudes = magnitudesOf(catalog)) {
        put("CatalogMinimumMagnitude", magnitudes->brightest);
        put("CatalogMaximumMagnitude", magnitudes->faintest);
    }
    put("CatalogExpansion", 0);
    put("ArcsecPerPixelHoriz", kTestImageScale);
    put("ArcsecPerPixelVert", kTestImageScale);
    put("RollAngle", 0);
    put("Equinox", 2000);
    put("ProjectionType", 1);
    put("RightAscension", target.ra);
    put("Declination", target.dec);
}

void reportTestSolution(AutomationObject& plate, Steps& step, engine::LogPort& log) {
    step([&] {
        log.AddToLog("Test image solved using " + count(plate, "MatchedStars") +
                     " stars, average residual is " + fixed(plate, "MatchAvgResidual", "0.#0") +
                     " arcsec, order =" + plate.get("MatchFitOrder").toText());
    });
    step([&] { log.AddToLog(" RA = " + platform::raText(plate.get("RightAscension").toDouble())); });
    step([&] { log.AddToLog(" Dec = " + platform::decText(plate.get("Declination").toDouble())); });
    step([&] {
        log.AddToLog(" Roll = " + fixed(plate, "RollAngle", "0.000") +
                     " HScale = " + fixed(plate, "ArcsecPerPixelHoriz", "0.000") +
                     " VScale = " + fixed(plate, "ArcsecPerPixelVert", "0.000"));
    });
}

}  // namespace

SolverTests::SolverTests(const SolveServices& services, PlateSolvePanel& panel, const CatalogSetup& catalogs)
    : services_(services), panel_(panel), catalogs_(catalogs) {
    panel_.cmdTestCatPath.onClick = [this] { cmdTestCatPath_Click(); };
}

void SolverTests::cmdTestCatPath_Click() {
    panel_.cmdTestCatPath.setEnabled(false);
    panel_.lblCatTest.setCaption("");
    bool passed = false;
    Steps{services_.log}([&] { passed = runTest(); });
    panel_.lblCatTest.setCaption(std::string(passed ? "Test passed" : "Test failed") + kCrLf + "(see log)");
    panel_.cmdTestCatPath.setEnabled(true);
}

bool SolverTests::runTest() {
    engine::LogPort& log = services_.log;
    if (!PinPointIsInstalled(services_.automation)) {
        log.AddToLog("");
        log.AddToLog("PinPoint is not installed");
        return false;
    }
    if (PinPointFullIsInstalled(services_.automation)) return TestCatPath();
    log.AddToLog("");
    return TestCatPath_PPLE();
}

bool SolverTests::TestCatPath() {
    constexpr int kImageSize = 6;                          // pixels
    constexpr double kScale = 600;                         // arc-seconds per pixel
    constexpr double kField = kImageSize * kScale / 3600;  // degrees
    engine::LogPort& log = services_.log;
    const int catalog = catalogs_.PinPointCatalog();

    const ObjectRef object = services_.automation.create("PinPoint.Plate");
    AutomationObject& plate = required(object);
    plate.put("Catalog", catalog);
    plate.put("CatalogPath", panel_.txtCatPath.text());
    services_.loop.yield();
    if (services_.state.StopRequested) return false;

    Steps step(log);
    const auto put = [&](const char* member, const Value& value) { step([&] { plate.put(member, value); }); };
    put("CatalogMaximumMagnitude", 20);
    put("CatalogMinimumMagnitude", -2);
    put("ImageArray", syntheticImage(kImageSize));
    put("CatalogExpansion", 0);
    put("ArcsecPerPixelHoriz", kScale);
    put("ArcsecPerPixelVert", kScale);
    put("RollAngle", 0);
    put("Equinox", 2000);
    put("ProjectionType", 1);
    put("CatalogMinimumMagnitude", -2.0);
    step([&] { plate.put("CatalogMaximumMagnitude", toNumber(panel_.txtCatMaxMag.text())); });
    put("RightAscension", 0.0);
    put("Declination", 0.0);
    put("ExposureStartTime", automationDate(services_.loop.clock().utc()));
    step([&] { plate.call("FindCatalogStars"); });

    services_.loop.yield();
    log.AddToLog("");
    log.AddToLog("** PinPoint test **");
    log.AddToLog("Catalog: " + ppCatName(catalog));
    step([&] { log.AddToLog("Path: " + plate.get("CatalogPath").toText()); });
    step([&] {
        log.AddToLog("Position:  RA " + services_.utility.HoursToHMS(0, 1) + " Dec " +
                     services_.utility.DegreesToDMS(0, 1));
    });
    log.AddToLog("Field search = " + formatNumber(kField, "0.0") + " x " + formatNumber(kField, "0.0") +
                 " (degrees)");
    if (step.failed()) {
        log.AddToLog("PinPoint test failed");
        return false;
    }
    step([&] { log.AddToLog("PinPoint test passed with " + count(plate, "CatalogStars") + " stars found"); });
    return !step.failed();
}

bool SolverTests::TestCatPath_PPLE() {
    engine::LogPort& log = services_.log;
    const int catalog = catalogs_.PinPointCatalog();

    services_.state.PlateSolved = false;
    services_.state.forgetStop();
    const ObjectRef object = services_.automation.create("PinPoint.Plate");
    AutomationObject& plate = required(object);

    const std::string path =
        services_.settings.GetSetting("PolarAlign", "ImagePath", "C:") + "\\VTL_Test_Image.fit";
    std::error_code ignored;
    if (!std::filesystem::exists(services_.folders.real(path), ignored)) {
        log.AddToLog("Could not open " + path);
        log.AddToLog("(mod TestCatPathPPLE)");
        return false;
    }
    services_.loop.yield();
    if (!attach(plate, path)) {
        log.AddToLog("AttachFITS Failed");
        return false;
    }
    const Position target{numberOrZero(plate, "targetrightascension"),
                          numberOrZero(plate, "targetdeclination")};

    Steps step(log);
    sendTestParameters(plate, step, catalog, panel_.txtCatPath.text(), target);
    const auto call = [&](const char* member) {
        bool succeeded = false;
        step([&] { succeeded = plate.call(member).toBool(); });
        return succeeded;
    };
    bool solved = call("FindImageStars") && call("FindCatalogStars");
    services_.loop.yield();
    solved = solved && call("Solve");

    log.AddToLog("");
    log.AddToLog("** PinPoint LE test **");
    if (!solved) log.AddToLog(" " + step.lastError());
    log.AddToLog("Catalog: " + ppCatName(catalog));
    step([&] { log.AddToLog("Path: " + plate.get("CatalogPath").toText()); });
    if (solved) {
        reportTestSolution(plate, step, log);
    } else {
        log.AddToLog("PinPoint LE test failed");
    }
    log.AddToLog("  ");
    return solved;
}

}  // namespace vantrel::platesolve
