#include "engine/plate_taker.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "engine/angles.h"
#include "engine/simulator_exposure.h"
#include "platform/text.h"

namespace vantrel::engine {
namespace {

std::string plateName(const TakenPlate& plate) { return "Plate " + std::to_string(plate.number); }

/// The plate's errors as the solver fitted them, else as its stars make them likely, else as is assumed where
/// it said nothing.
PlateCovariance covarianceOf(const PlateSolution& solution) {
    std::optional<PlateCovariance> covariance;
    if (solution.errors) covariance = engine::covarianceOf(*solution.errors);
    if (!covariance && solution.quality) covariance = engine::covarianceOf(*solution.quality);
    return covariance.value_or(PlateCovariance::ofSigmas(1, 60));
}

}  // namespace

PlateTaker::PlateTaker(RunPanel& panel, RunState& state, const Services& services)
    : panel_(panel), state_(state), services_(services), indicators_(services.settings) {}

TakenPlate PlateTaker::at(int number, const EquatorialPosition& sentTo, Pointing pointing) const {
    TakenPlate plate{
        .number = number, .sentTo = sentTo, .pointing = pointing, .lst = services_.telescope.SiderealTime()};
    plate.readAt = services_.loop.clock().sinceStart();
    plate.scopeHA = NormalizeRAHours(plate.lst - sentTo.RA);
    return plate;
}

std::optional<TakenPlate> PlateTaker::take(const TakenPlate& plate, int exposures,
                                           const EquatorialPosition& offset, Lamps lamps) {
    std::vector<TakenPlate> solved;
    for (int exposure = 1; exposure <= exposures; ++exposure) {
        if (exposure > 1) {
            log("Exposure " + std::to_string(exposure) + " of " + std::to_string(exposures));
            Indicators::switchOff(panel_.lblSolve);
            indicators_.SetActiveColors(panel_.lblExpose);
        }
        const TakenPlate here = exposure == 1 ? plate : at(plate.number, plate.sentTo, plate.pointing);
        if (const auto one = takeOne(here, offset, exposure == 1 ? lamps : Lamps::kShow))
            solved.push_back(*one);
    }
    if (solved.empty()) return std::nullopt;
    return meanOf(solved);
}

std::optional<TakenPlate> PlateTaker::takeOne(TakenPlate plate, const EquatorialPosition& offset,
                                              Lamps lamps) {
    goOn();
    const double exposedLst = middleOfExposure(plate);
    const std::string image = expose();
    // The picture before is still there, and would tell of a mount that has turned meanwhile.
    if (plate.pointing == Pointing::kByHand && cameraFailed()) return std::nullopt;
    announceSolving(plate.number, lamps);
    const auto solution = solve(plate, image, offset);
    if (!solution) return std::nullopt;
    plate.exposedLst = exposedLst;
    plate.ra = NormalizeRAHours(solution->ra);
    plate.dec = solution->dec;
    plate.raError = NormalizeRAHours(state_.PlateRAError);
    plate.decError = state_.PlateDecError;
    plate.positionAngle =
        positionAngleOfRows(solution->CD1_1, solution->CD1_2, solution->CD2_1, solution->CD2_2);
    plate.covariance = covarianceOf(*solution);
    log(plateName(plate) + " RA = " + services_.utility.HoursToHMS(plate.ra));
    log(plateName(plate) + " Dec = " + services_.utility.DegreesToDMS(plate.dec));
    return plate;
}

/// Takes an image and saves it; returns its file name.
std::string PlateTaker::expose() {
    const bool ownName =
        platform::leadingNumber(services_.settings.GetSetting("PolarAlign", "SaveImages", "0")) == 1;
    const auto now = platform::civilLocal(services_.loop.clock().utc());
    const std::string name = ownName ? platform::formatTime(now, "HH_mm_ss") + "_Image" : kSavedImage;
    std::string imageFileName = name + ".fit";
    const Progress::UnderWay exposing(services_.progress,
                                      {Stage::kExpose, state_.UsingAxisSimulator ? 0 : exposureSeconds()});
    if (state_.UsingAxisSimulator) {
        exposeWithSimulator(services_);
        goOn();
        saveSimulatorImage(services_, state_, name);
    } else {
        services_.camera.AcquireImage(platform::toNumber(panel_.txtExposeInterval.text()));
        goOn();
        services_.camera.SaveImageToFile(imageFileName);
    }
    return imageFileName;
}

bool PlateTaker::cameraFailed() const { return state_.CameraFailed && !state_.UsingAxisSimulator; }

/// The lamps change before the first plate's line, and after the others'.
void PlateTaker::announceSolving(int number, Lamps lamps) {
    const auto showLamps = [&] {
        if (lamps == Lamps::kShow) {
            Indicators::switchOff(panel_.lblExpose);
            indicators_.SetActiveColors(panel_.lblSolve);
        }
        goOn();
    };
    if (number == 1) showLamps();
    log("Start Solving Plate " + std::to_string(number));
    if (number != 1) showLamps();
}

std::optional<PlateSolution> PlateTaker::solve(const TakenPlate& plate, const std::string& image,
                                               const EquatorialPosition& offset) {
    state_.ExposureRA = plate.sentTo.RA;
    state_.ExposureDec = plate.sentTo.Dec;
    state_.SpiralSearchAllowed = true;
    state_.WholeSkyAllowed = plate.pointing == Pointing::kByHand;
    const Progress::UnderWay solving(services_.progress, {Stage::kSolve});
    auto solution = services_.solver.SolvePlate(image, offset.RA, offset.Dec);
    if (!state_.PlateSolved) return std::nullopt;
    log(plateName(plate) + " Solved");
    return solution;
}

/// The sidereal time in the middle of an exposure that begins now; the simulator's lasts no time at all.
double PlateTaker::middleOfExposure(const TakenPlate& plate) const {
    constexpr double kSiderealHours = 1.00273791 / 3600;  // of a second
    const auto waited = services_.loop.clock().sinceStart() - plate.readAt;
    const double half = state_.UsingAxisSimulator ? 0 : exposureSeconds() / 2;
    return plate.lst + (std::chrono::duration<double>(waited).count() + half) * kSiderealHours;
}

double PlateTaker::exposureSeconds() const {
    constexpr double kLongest = 86'400;  // a day: more is a slip of the keys
    return std::clamp(platform::leadingNumber(panel_.txtExposeInterval.text()), 0.0, kLongest);
}

}  // namespace vantrel::engine
