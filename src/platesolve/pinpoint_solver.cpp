#include "platesolve/pinpoint_solver.h"

#include <array>
#include <cmath>
#include <functional>

#include "engine/angles.h"
#include "platesolve/plate_error.h"
#include "platform/sexagesimal.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;
using engine::PlateSolution;

namespace {

constexpr double kWholeSky = 180;    // degrees
constexpr int kExclusionBorder = 2;  // pixels
constexpr int kSpiralAttempts = 10;  // after the first

// Where the attempts lie, in steps of the search: north and south of the start, further and further out.
constexpr std::size_t kSearchPlaces = 25;
constexpr std::array<int, kSearchPlaces> SpiralRAOffsets{};
constexpr std::array<int, kSearchPlaces> SpiralDecOffsets = [] {
    std::array<int, kSearchPlaces> offsets{};
    for (std::size_t i = 1; i < kSearchPlaces; ++i) {
        const int distance = static_cast<int>(i + 1) / 2;
        offsets[i] = i % 2 == 1 ? distance : -distance;
    }
    return offsets;
}();

/// One solve, from the first parameter to the detached file.
class Solve {
  public:
    Solve(const SolveServices& services, const PlateSolvePanel& panel, int PinPointCatalog, ObjectRef plate,
          std::function<ObjectRef()> renew, double startRA, double startDec)
        : services_(services),
          state_(services.state),
          panel_(panel),
          PinPointCatalog_(PinPointCatalog),
          plate_(std::move(plate)),
          renew_(std::move(renew)),
          startRA_(startRA),
          startDec_(startDec) {}

    std::optional<PlateSolution> run(const std::string& imageName);

  private:
    std::optional<PlateSolution> solveAttached();
    bool searchWithin(double radius);
    struct Search {
        int lastAttempt = 0;
        double raStep = 0;   // hours
        double decStep = 0;  // degrees
    };

    void loadParameters();
    void chooseCatalog();
    bool attach(const std::string& path);
    void sendStartingValues();
    bool findImageStars();
    Search planSearch();
    void aim(int attempt, const Search& search);
    std::optional<PlateSolution> reportSolution();
    std::optional<engine::SolutionQuality> quality(double scaleH, double scaleV);
    std::optional<engine::SolutionErrors> errors();
    void reportFailedAttempt(int attempt, const Search& search);
    void keepReason();
    void pauseOneSecond();
    void updateFile(PlateSolution& solution);

    std::nullopt_t failedToSolve();
    std::nullopt_t leaveUnsolved();
    void reportParameters();

    bool stopped() const { return state_.StopRequested || state_.AppUnloading; }
    void log(const std::string& text) { services_.log.AddToLog(text); }
    bool succeeds(const std::string& member, const Arguments& arguments = {});
    double number(const std::string& member);
    std::string count(const std::string& collection);

    SolveServices services_;
    engine::RunState& state_;
    const PlateSolvePanel& panel_;
    int PinPointCatalog_;
    ObjectRef plate_;
    std::function<ObjectRef()> renew_;
    double startRA_;   // hours, not normalised
    double startDec_;  // degrees
    int binning_ = 0;
    bool wholeSky_ = false;  // the engine searches by itself wherever the start is
    Milliseconds startedAt_{0};
};

double valueOf(const TextBox& box) { return leadingNumber(box.text()); }
double expansion(const PlateSolvePanel& panel) { return valueOf(panel.txtCatExp) / 100; }

/// While a file is attached the engine's errors stop nothing: the step that raised one is passed over.
template <typename Step>
void tolerating(Step&& step) {
    try {
        step();
    } catch (const OperationError&) {
    }
}

std::optional<PlateSolution> Solve::run(const std::string& imageName) {
    std::string path;
    try {
        loadParameters();
        if (stopped()) return failedToSolve();
        startedAt_ = services_.loop.clock().sinceStart();
        path = services_.settings.GetSetting("PolarAlign", "ImagePath", "C:") + "\\" + imageName;
    } catch (const OperationError&) {
        reportParameters();
        return std::nullopt;
    }
    if (!existingImage(services_.folders, path)) {
        log("Could not attach to " + path);
        return failedToSolve();
    }
    if (!attach(path)) {
        log("AttachFITS Failed");
        return failedToSolve();
    }
    sendStartingValues();
    wholeSky_ = state_.WholeSkyAllowed && searchWithin(kWholeSky);
    const auto solution = solveAttached();
    if (wholeSky_) searchWithin(0);
    return solution;
}

/// From the stars on the image to the detached file.
std::optional<PlateSolution> Solve::solveAttached() {
    if (!findImageStars()) return leaveUnsolved();

    const Search search = planSearch();
    std::optional<PlateSolution> solution;
    for (int attempt = 0; attempt <= search.lastAttempt && !solution; ++attempt) {
        aim(attempt, search);

        log("Step 2: Look up catalog stars for area...");
        services_.loop.yield();
        if (stopped()) return failedToSolve();
        if (!succeeds("FindCatalogStars")) return leaveUnsolved();
        tolerating([&] { log("Step 2: Found " + count("CatalogStars") + " catalog stars in area."); });
        services_.loop.yield();
        if (stopped()) return failedToSolve();

        log("Step 3: Solve the plate...");
        services_.loop.yield();
        if (succeeds("Solve")) {
            solution = reportSolution();
            if (solution) pauseOneSecond();
        } else {
            reportFailedAttempt(attempt, search);
        }
    }

    if (solution) {
        updateFile(*solution);
    } else {
        keepReason();
        state_.PlateSolved = false;
    }
    succeeds("DetachFITS");
    return solution;
}

void Solve::loadParameters() {
    chooseCatalog();
    AutomationObject& plate = required(plate_);
    plate.put("CatalogExpansion", expansion(panel_));
    plate.put("CatalogMaximumMagnitude", valueOf(panel_.txtCatMaxMag));
    plate.put("CatalogPath", panel_.txtCatPath.text());
    plate.put("MinimumBrightness", valueOf(panel_.txtSolveMinBrt));
    plate.put("MinimumStarSize", valueOf(panel_.txtSolveMinSiz));
    plate.put("SigmaAboveMean", valueOf(panel_.txtSolveMinSig));
    plate.put("ExclusionBorder", kExclusionBorder);
    plate.put("MaxSolveStars", toInt32(valueOf(panel_.txtMaxSolveStars)));
    binning_ = toInt16(leadingNumber(services_.settings.GetSetting("Solve", "CamBin", "3")));
}

/// A solver that went or hung may be back, but answers a new object only.
void Solve::chooseCatalog() {
    const auto choose = [this] { required(plate_).put("Catalog", PinPointCatalog_); };
    try {
        choose();
    } catch (const OperationError& error) {
        if (!isGone(error)) throw;
        plate_ = renew_();
        choose();
    }
}

bool Solve::attach(const std::string& path) {
    if (succeeds("AttachFITS", {path})) return true;
    succeeds("DetachFITS");
    return succeeds("AttachFITS", {path});
}

void Solve::sendStartingValues() {
    bool hasSolution = false;
    tolerating([&] { hasSolution = plate_->get("WCSValid").toBool(); });
    if (!hasSolution) {
        tolerating([&] { plate_->put("RightAscension", engine::NormalizeRAHours(startRA_)); });
        tolerating([&] { plate_->put("Declination", startDec_); });
        tolerating([&] { plate_->put("ArcsecPerPixelHoriz", valueOf(panel_.txtSolveScaleH)); });
        tolerating([&] { plate_->put("ArcsecPerPixelVert", valueOf(panel_.txtSolveScaleV)); });
        tolerating([&] { plate_->put("MinMatchStars", toInt16(valueOf(panel_.txtSolveMinStars))); });
    }
    const double residual = valueOf(panel_.txtSolveMaxRes);
    if (residual != 0) tolerating([&] { plate_->put("MaxMatchResidual", residual); });
    const double filter = valueOf(panel_.txtSolveFilter);
    if (filter > 0) succeeds("ConvolveGaussian", {filter});
}

/// Degrees around the start position, 0 for its neighbourhood; not every engine can. False where it can't.
bool Solve::searchWithin(double radius) {
    try {
        plate_->put("SearchRadius", radius);
        return true;
    } catch (const OperationError&) {
        return false;
    }
}

bool Solve::findImageStars() {
    services_.loop.yield();
    bool found = false;
    tolerating([&] {
        found = required(plate_).call("FindImageStars").toBool();
        if (!found) keepReason();
    });
    if (!found) return false;
    tolerating([&] { log("Step 1: Found " + count("ImageStars") + " objects in image."); });
    services_.loop.yield();
    return true;
}

Solve::Search Solve::planSearch() {
    Search search;
    if (wholeSky_) return search;
    if (!panel_.chkSpiralSearch.ticked() || !state_.SpiralSearchAllowed) return search;
    search.lastAttempt = kSpiralAttempts;
    const double fieldWidth = number("Columns") * number("ArcsecPerPixelHoriz") / (3600 * 15);  // hours
    const double fieldHeight = number("Rows") * number("ArcsecPerPixelVert") / 3600;            // degrees
    const double declination = engine::degreesToRadians(number("Declination"));
    search.raStep = fieldWidth / std::cos(declination) * (number("CatalogExpansion") * 2);
    search.decStep = fieldHeight;
    return search;
}

void Solve::aim(int attempt, const Search& search) {
    const auto place = static_cast<std::size_t>(attempt);
    const double ra = startRA_ + SpiralRAOffsets[place] * search.raStep;
    const double dec = startDec_ + SpiralDecOffsets[place] * search.decStep;
    tolerating([&] { plate_->put("RightAscension", engine::NormalizeRAHours(ra)); });
    tolerating([&] { plate_->put("Declination", dec); });
    tolerating([&] {
        log("Plate Solve Attempt at RA = " +
            services_.utility.HoursToHMS(plate_->get("RightAscension").toDouble()) +
            "  Dec = " + services_.utility.DegreesToDMS(plate_->get("Declination").toDouble()));
    });
}

/// Nothing when the engine went before it told where the plate lies: zeros would be taken for a place.
std::optional<PlateSolution> Solve::reportSolution() {
    tolerating([&] {
        log(" Solved using " + count("MatchedStars") + " stars, average residual is " +
            formatNumber(plate_->get("MatchAvgResidual").toDouble(), "0.#0") +
            " arcsec, order =" + plate_->get("MatchFitOrder").toText());
    });
    const Milliseconds took = services_.loop.clock().sinceStart() - startedAt_;
    log(" Solution took " + formatNumber(static_cast<double>(took.count()) / 1000, "0.0") + " seconds");

    bool gone = false;
    const auto told = [&](const char* member) {
        try {
            return plate_->get(member).toDouble();
        } catch (const OperationError& error) {
            gone = gone || isGone(error);
            return 0.0;
        }
    };
    PlateSolution solution{.ra = told("RightAscension"), .dec = told("Declination")};
    const double roll = told("RollAngle");
    const double scaleH = told("ArcsecPerPixelHoriz");
    const double scaleV = told("ArcsecPerPixelVert");
    if (gone) return std::nullopt;
    state_.PlateSolved = true;
    log(" RA = " + platform::raText(solution.ra) + "  " + formatNumber(solution.ra, "0.00000000"));
    log(" Dec = " + platform::decText(solution.dec) + "  " + formatNumber(solution.dec, "0.000000"));
    log(" Roll = " + formatNumber(roll, "0.000") + " HScale = " + formatNumber(scaleH, "0.000") +
        " VScale = " + formatNumber(scaleV, "0.000") + " Binning = " + std::to_string(binning_));
    tolerating([&] { reportPlateError(solution.ra, solution.dec, state_, services_.log); });

    const double theta = engine::degreesToRadians(roll);
    const double h = scaleH / 3600;  // degrees per pixel
    const double v = scaleV / 3600;
    solution.CD1_1 = std::cos(theta) * h;
    solution.CD1_2 = -v * std::sin(theta);
    solution.CD2_1 = std::sin(theta) * h;
    solution.CD2_2 = std::cos(theta) * v;
    solution.quality = quality(h, v);
    solution.errors = errors();
    return solution;
}

/// How good the solution is, by the solver's own figures and degrees per pixel. Solvers that don't tell are
/// none the worse.
std::optional<engine::SolutionQuality> Solve::quality(double scaleH, double scaleV) {
    const auto whole = [](const platform::Value& value) {
        const double number = value.toDouble();
        return number >= 0 && number < 1e6 ? static_cast<int>(number) : 0;
    };
    try {
        const ObjectRef matched = plate_->get("MatchedStars").toObject();
        if (!matched) return std::nullopt;
        return engine::SolutionQuality{.matched = whole(matched->get("Count")),
                                       .meanResidual = plate_->get("MatchAvgResidual").toDouble(),
                                       .order = whole(plate_->get("MatchFitOrder")),
                                       .fieldWidth = std::abs(plate_->get("Columns").toDouble() * scaleH),
                                       .fieldHeight = std::abs(plate_->get("Rows").toDouble() * scaleV)};
    } catch (...) {
        return std::nullopt;
    }
}

/// As the solver fitted them. Solvers that don't tell are none the worse.
std::optional<engine::SolutionErrors> Solve::errors() {
    const engine::SolutionErrors errors{.centre = number("MatchCentreError"),
                                        .roll = number("MatchRollError")};
    return engine::covarianceOf(errors) ? std::optional(errors) : std::nullopt;
}

void Solve::reportFailedAttempt(int attempt, const Search& search) {
    if (attempt > 0)
        log("  Plate solve attempt " + std::to_string(attempt) + " of " + std::to_string(search.lastAttempt) +
            " failed");
    else if (search.lastAttempt > 0)
        log(" Initiating spiral search ");
}

/// Engines that don't tell are none the worse.
void Solve::keepReason() {
    tolerating([&] { state_.WhyUnsolved = plate_->get("FailureReason").toWords(); });
}

/// Leaves the solution in view, with the buttons alive.
void Solve::pauseOneSecond() {
    constexpr Milliseconds kStep{50};
    const Milliseconds end = services_.loop.clock().sinceStart() + Milliseconds{1000};
    while (services_.loop.clock().sinceStart() < end) {
        services_.loop.yield();
        services_.loop.sleep(kStep);
    }
}

void Solve::updateFile(PlateSolution& solution) {
    succeeds("UpdateFITS");
    tolerating([&] { solution.ra = plate_->get("RightAscension").toDouble(); });
    tolerating([&] { solution.dec = plate_->get("Declination").toDouble(); });
}

/// The exit after a stop and for an image that can't be used.
std::nullopt_t Solve::failedToSolve() {
    if (!state_.AppUnloading) {
        log("Failed to Solve Plate!!");
        state_.PlateSolved = false;
        succeeds("DetachFITS");
    }
    return std::nullopt;
}

/// The silent exit when there are no stars to match.
std::nullopt_t Solve::leaveUnsolved() {
    succeeds("DetachFITS");
    return std::nullopt;
}

/// What was meant to be sent beside what the engine holds, after it refused a parameter.
void Solve::reportParameters() {
    state_.PlateSolved = false;
    log("** PinPoint Error - Please Verify Settngs **");
    const auto held = [&](const char* member) {
        std::string text;
        tolerating([&] { text = required(plate_).get(member).toText(); });
        return text;
    };
    const auto sent = [](const TextBox& box) { return toText(valueOf(box)); };
    const auto sentWhole = [](const TextBox& box) {
        std::string text = box.text();
        tolerating([&] { text = std::to_string(toInt32(valueOf(box))); });
        return text;
    };
    log("Catalog = " + std::to_string(PinPointCatalog_) + "  pp = " + held("Catalog"));
    log("CatalogExpansion = " + toText(expansion(panel_)) + "  pp = " + held("CatalogExpansion"));
    log("CatalogMaximumMagnitude = " + sent(panel_.txtCatMaxMag) +
        "  pp = " + held("CatalogMaximumMagnitude"));
    log("CatalogPath = " + panel_.txtCatPath.text() + "  pp = " + held("CatalogPath"));
    log("MinimumBrightness = " + sent(panel_.txtSolveMinBrt) + "  pp = " + held("MinimumBrightness"));
    log("MinimumStarSize = " + sent(panel_.txtSolveMinSiz) + "  pp = " + held("MinimumStarSize"));
    log("SigmaAboveMean = " + sent(panel_.txtSolveMinSig) + " pp = " + held("SigmaAboveMean"));
    log("SetMaxSolveStars =" + sentWhole(panel_.txtMaxSolveStars) + "  pp = " + held("MaxSolveStars"));
    log("ArcsecPerPixelHoriz = " + sent(panel_.txtSolveScaleH) + "  pp = " + held("ArcsecPerPixelHoriz"));
    log("ArcsecPerPixelVert = " + sent(panel_.txtSolveScaleV) + " pp = " + held("ArcsecPerPixelVert"));
    log("MinMatchStars = " + sentWhole(panel_.txtSolveMinStars) + "  pp = " + held("MinMatchStars"));
    log("camBin = " + services_.settings.GetSetting("Solve", "CamBin", "3"));
}

/// Calls the member; a call succeeded only when it returned True.
bool Solve::succeeds(const std::string& member, const Arguments& arguments) {
    bool succeeded = false;
    tolerating([&] { succeeded = required(plate_).call(member, arguments).toBool(); });
    return succeeded;
}

/// The property's value; 0 when the engine can't tell it.
double Solve::number(const std::string& member) {
    double value = 0;
    tolerating([&] { value = plate_->get(member).toDouble(); });
    return value;
}

std::string Solve::count(const std::string& collection) {
    return required(plate_->get(collection).toObject()).get("Count").toText();
}

}  // namespace

PinPointSolver::PinPointSolver(const SolveServices& services, const PlateSolvePanel& panel,
                               const CatalogSetup& catalogs)
    : services_(services), panel_(panel), catalogs_(catalogs) {}

void PinPointSolver::createPinPointPlate() { PinPointPlate_ = services_.automation.create("PinPoint.plate"); }

std::optional<PlateSolution> PinPointSolver::solve(const std::string& imageName, double raOffset,
                                                   double decOffset) {
    // The operator may choose the method anew meanwhile: the solve keeps the object that it began with.
    Solve solve(
        services_, panel_, catalogs_.PinPointCatalog(), PinPointPlate_,
        [this] {
            createPinPointPlate();
            return PinPointPlate_;
        },
        services_.state.ExposureRA + raOffset, services_.state.ExposureDec + decOffset);
    return solve.run(imageName);
}

}  // namespace vantrel::platesolve
