#include "correction/star_pointing.h"

#include <cmath>

#include "engine/angles.h"
#include "engine/simulator_exposure.h"
#include "engine/waiting.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::Indicators;
using engine::NormalizeRAHours;
using platform::formatNumber;

struct StarPointing::Adjustment {
    const char* heading;
    const char* aborted;
    const char* solved;
    CorrectionTarget (*target)(const PointingSituation&);
};

std::optional<engine::PixelPosition> SkyOffsetToPixel(double ra, double dec,
                                                      const engine::PlateSolution& plate,
                                                      const engine::PixelPosition& star) {
    const double deltaRA = 15 * engine::signedHours(ra - plate.ra);
    const double deltaDec = dec - plate.dec;
    const double det = plate.CD1_1 * plate.CD2_2 - plate.CD1_2 * plate.CD2_1;
    if (det == 0) return std::nullopt;
    return engine::PixelPosition{(deltaRA * plate.CD2_2 - plate.CD1_2 * deltaDec) / det + star.x,
                                 (plate.CD1_1 * deltaDec - deltaRA * plate.CD2_1) / det + star.y};
}

double arcMinutesPerPixel(const engine::PlateSolution& plate) {
    constexpr double kPerDegree = 60;
    const double scale =
        kPerDegree * std::sqrt(std::abs(plate.CD1_1 * plate.CD2_2 - plate.CD1_2 * plate.CD2_1));
    return std::isfinite(scale) ? scale : 0;
}

StarPointing::StarPointing(engine::RunPanel& panel, engine::RunState& state, const engine::Services& services,
                           engine::ManualExposures& exposures, engine::OverlayPort& overlays,
                           OpenImage& image, StarFinder& starFinder, CorrectionMarks& marks)
    : panel_(panel),
      state_(state),
      services_(services),
      exposures_(exposures),
      overlays_(overlays),
      image_(image),
      starFinder_(starFinder),
      marks_(marks),
      indicators_(services.settings) {}

void StarPointing::PointAzCorrectionAllignmentStar(double ErrorAmplitude, double ErrorAngle) {
    pointOrAbort({"*** Az Correction ***", "Azimuth Correction Aborted !!", "Azimuth Correction Plate Solved",
                  azimuthTarget},
                 ErrorAmplitude, ErrorAngle);
}

void StarPointing::PointAltCorrectionAllignmentStar(double ErrorAmplitude, double ErrorAngle) {
    pointOrAbort({"*** Elevation Correction ***", "Polar Align Aborted !!",
                  "Elevation Correction Plate Solved", elevationTarget},
                 ErrorAmplitude, ErrorAngle);
}

void StarPointing::pointOrAbort(const Adjustment& adjustment, double ErrorAmplitude, double ErrorAngle) {
    marks_.CorrectionPointed = false;
    marks_.mountSlewed = false;
    try {
        point(adjustment, ErrorAmplitude, ErrorAngle);
        marks_.CorrectionPointed = true;
    } catch (const Ended&) {
        if (!state_.AppUnloading) services_.log.AddToLog(adjustment.aborted);
    }
}

void StarPointing::point(const Adjustment& adjustment, double ErrorAmplitude, double ErrorAngle) {
    PointingSituation situation = readSituation(ErrorAmplitude, ErrorAngle);
    exposeAndSave();
    services_.log.AddToLog(adjustment.heading);

    Indicators::switchOff(panel_.lblExpose);
    indicators_.SetActiveColors(panel_.lblSolve);
    check();
    state_.ExposureRA = situation.telescopeRA;
    state_.ExposureDec = situation.telescopeDec;
    state_.SpiralSearchAllowed = false;
    state_.WholeSkyAllowed = false;
    const auto plate = services_.solver.SolvePlate(engine::kSavedImage, 0, 0);
    if (!state_.PlateSolved || !plate) throw Ended{};
    services_.log.AddToLog(adjustment.solved);

    situation.plateRA = plate->ra;
    situation.plateDec = plate->dec;
    const CorrectionTarget target = adjustment.target(situation);
    for (const std::string& entry : target.log) services_.log.AddToLog(entry);

    marks_.arcMinutesPerPixel = arcMinutesPerPixel(*plate);
    check();
    findStar();
    check();
    if (LocateTargetOnImage(target.moveTo, *plate))
        drawPath();
    else
        slewInstead(target);
    Indicators::switchOff(panel_.lblSlew);
    services_.loop.yield();
}

PointingSituation StarPointing::readSituation(double ErrorAmplitude, double ErrorAngle) {
    PointingSituation situation;
    situation.ErrorAmplitude = ErrorAmplitude;
    situation.ErrorAngle = ErrorAngle;
    situation.telescopeRA = NormalizeRAHours(services_.telescope.GetTelescopeRA());
    situation.telescopeDec = services_.telescope.GetTelescopeDec();
    situation.latitude = services_.telescope.SiteLatitude();
    indicators_.SetActiveColors(panel_.lblExpose);
    check();
    situation.lst = services_.telescope.SiderealTime();
    return situation;
}

void StarPointing::exposeAndSave() {
    if (state_.UsingAxisSimulator) {
        engine::exposeWithSimulator(services_);
        engine::saveSimulatorImage(services_, state_, engine::kSavedImage);
        return;
    }
    constexpr double kSecondsToDownload = 3;
    services_.camera.AcquireImage(platform::toNumber(panel_.txtExposeInterval.text()));
    check();
    engine::WaitSeconds(services_.loop, kSecondsToDownload);
    check();
    services_.camera.SaveImageToFile(engine::kSavedImage);
}

void StarPointing::findStar() {
    exposures_.SimpleShortExpose();
    check();
    const auto [x, y] = starFinder_.FindBrightestStarOnImage();
    marks_.StarX = static_cast<float>(x);
    marks_.StarY = static_cast<float>(y);
    services_.log.AddToLog("Brightest Star X = " + formatNumber(marks_.StarX, "0") +
                           ", Brightest Star Y = " + formatNumber(marks_.StarY, "0"));
}

/// True, with the cross hair drawn, when the target lies in the central 80 % of the image.
bool StarPointing::LocateTargetOnImage(const engine::EquatorialPosition& moveTo,
                                       const engine::PlateSolution& plate) {
    const auto [width, height] = image_.access().size();
    const auto pixel =
        SkyOffsetToPixel(NormalizeRAHours(moveTo.RA), moveTo.Dec, plate, {marks_.StarX, marks_.StarY});
    if (!pixel) return false;
    marks_.TargetX = pixel->x;
    marks_.TargetY = pixel->y;
    const auto within = [](double value, int extent) {
        return value >= 0.1 * extent && value <= 0.9 * extent;
    };
    if (!within(pixel->x, width) || !within(pixel->y, height)) return false;
    overlays_.CrossHair(pixel);
    return true;
}

void StarPointing::slewInstead(const CorrectionTarget& target) {
    overlays_.CrossHair(engine::PixelPosition{marks_.StarX, marks_.StarY});
    marks_.TargetX = marks_.StarX;
    marks_.TargetY = marks_.StarY;
    Indicators::switchOff(panel_.lblSolve);
    indicators_.SetActiveColors(panel_.lblSlew);
    services_.log.AddToLog("Star is not on Plate");
    const double ra = NormalizeRAHours(target.scope.RA - target.raOffset);
    const double dec = target.decOffset + target.scope.Dec;
    services_.log.AddToLog("Slewing Telescope to: RA = " + formatNumber(ra, "0.000000") +
                           ", Dec = " + formatNumber(dec, "0.000000"));
    services_.log.AddToLog("                      RA = " + services_.utility.DegreesToHMS(ra * 15) +
                           ", Dec = " + services_.utility.DegreesToDMS(dec));
    check();
    marks_.mountSlewed = true;
    services_.telescope.SlewToCoordinates(ra, dec);
}

void StarPointing::drawPath() {
    services_.log.AddToLog("Star is on Plate");
    services_.log.AddToLog("Target X = " + formatNumber(marks_.TargetX, "0") +
                           ", Target Y = " + formatNumber(marks_.TargetY, "0"));
    overlays_.DrawLineOnImage(platform::toInt32(marks_.StarX), platform::toInt32(marks_.StarY),
                              platform::toInt32(marks_.TargetX), platform::toInt32(marks_.TargetY));
    Indicators::switchOff(panel_.lblSolve);
}

void StarPointing::check() {
    services_.loop.yield();
    if (state_.StopRequested || state_.AppUnloading) throw Ended{};
}

}  // namespace vantrel::correction
