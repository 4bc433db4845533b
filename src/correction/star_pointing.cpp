#include "correction/star_pointing.h"

#include <cmath>

#include "correction/exact_mark.h"
#include "engine/angles.h"
#include "engine/simulator_exposure.h"
#include "engine/site_air.h"
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
    AdjusterTurn (*turn)(const engine::PolarError&, double latitude, bool azimuthTurned);
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

bool exactMarkWanted(engine::SettingsPort& settings) {
    return platform::leadingNumber(settings.GetSetting("PolarAlign", "ExactMark", "0")) != 0;
}

double arcMinutesPerPixel(const engine::PlateSolution& plate) {
    constexpr double kPerDegree = 60;
    const double scale =
        kPerDegree * std::sqrt(std::abs(plate.CD1_1 * plate.CD2_2 - plate.CD1_2 * plate.CD2_1));
    return std::isfinite(scale) ? scale : 0;
}

StarPointing::StarPointing(engine::RunPanel& panel, engine::RunState& state, const engine::Services& services,
                           engine::ManualExposures& exposures, engine::OverlayPort& overlays,
                           OpenImage& image, CorrectionStarFinder& starFinder, CorrectionMarks& marks)
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
    pointOrAbort(
        {"*** Az Correction ***", "Azimuth Correction Aborted !!", "Azimuth Correction Plate Solved",
         azimuthTarget,
         [](const engine::PolarError& error, double latitude, bool) { return azimuthTurn(error, latitude); }},
        ErrorAmplitude, ErrorAngle);
}

void StarPointing::PointAltCorrectionAllignmentStar(double ErrorAmplitude, double ErrorAngle) {
    pointOrAbort({"*** Elevation Correction ***", "Polar Align Aborted !!",
                  "Elevation Correction Plate Solved", elevationTarget, elevationTurn},
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

    const auto plate = solve({.RA = situation.telescopeRA, .Dec = situation.telescopeDec});
    if (!plate) throw Ended{};
    services_.log.AddToLog(adjustment.solved);

    situation.plateRA = plate->ra;
    situation.plateDec = plate->dec;
    const CorrectionTarget target = adjustment.target(situation);
    for (const std::string& entry : target.log) services_.log.AddToLog(entry);

    marks_.arcMinutesPerPixel = arcMinutesPerPixel(*plate);
    check();
    findStar();
    check();
    const bool exact = exactMarkWanted(services_.settings);
    const AdjusterTurn turn = adjustment.turn({.ErrorAmplitude = ErrorAmplitude, .ErrorAngle = ErrorAngle},
                                              situation.latitude, marks_.azimuthTurned);
    const auto star = exact ? starPlace(*plate) : std::nullopt;
    const auto mark = exact ? exactPixel(*plate, star, turn)
                            : SkyOffsetToPixel(NormalizeRAHours(target.moveTo.RA), target.moveTo.Dec, *plate,
                                               {marks_.StarX, marks_.StarY});
    if (LocateTargetOnImage(mark)) {
        drawPath();
    } else {
        slewInstead(target);
        if (star) markAfterSlew(target.moveTo, *star, turn);
    }
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

std::optional<engine::PlateSolution> StarPointing::solve(const engine::EquatorialPosition& near) {
    Indicators::switchOff(panel_.lblExpose);
    indicators_.SetActiveColors(panel_.lblSolve);
    check();
    state_.ExposureRA = near.RA;
    state_.ExposureDec = near.Dec;
    state_.SpiralSearchAllowed = false;
    state_.WholeSkyAllowed = false;
    const auto plate = services_.solver.SolvePlate(engine::kSavedImage, 0, 0);
    return state_.PlateSolved ? plate : std::nullopt;
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

/// As the plate shows the sky now, at the image's size.
std::optional<PicturedSky> StarPointing::pictured(const engine::PlateSolution& plate) {
    const auto [width, height] = image_.access().size();
    return PicturedSky::of(plate, {width / 2.0, height / 2.0}, services_.telescope.SiderealTime());
}

std::optional<engine::EquatorialPosition> StarPointing::starPlace(const engine::PlateSolution& plate) {
    const auto picture = pictured(plate);
    if (!picture) return std::nullopt;
    return picture->place(picture->direction(engine::PixelPosition{marks_.StarX, marks_.StarY}));
}

std::optional<engine::PixelPosition> StarPointing::exactPixel(
    const engine::PlateSolution& plate, const std::optional<engine::EquatorialPosition>& star,
    const AdjusterTurn& turn) {
    const auto picture = pictured(plate);
    if (!picture || !star) return std::nullopt;
    const engine::Site site{.latitude = services_.telescope.SiteLatitude(),
                            .air = engine::siteAir(services_.settings, services_.telescope)};
    return exactMark(*picture, picture->direction(*star), turn, site);
}

/// True, with the cross hair drawn, when the target lies in the central 80 % of the image.
bool StarPointing::LocateTargetOnImage(const std::optional<engine::PixelPosition>& pixel) {
    const auto [width, height] = image_.access().size();
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

/// A slew goes as exactly as the mount does; a picture of the place where it ended says where the mark is
/// there. Without a solution the mark stays.
void StarPointing::markAfterSlew(const engine::EquatorialPosition& moveTo,
                                 const engine::EquatorialPosition& star, const AdjusterTurn& turn) {
    check();
    Indicators::switchOff(panel_.lblSlew);
    indicators_.SetActiveColors(panel_.lblExpose);
    exposeAndSave();
    const auto plate = solve({.RA = NormalizeRAHours(moveTo.RA), .Dec = moveTo.Dec});
    Indicators::switchOff(panel_.lblSolve);
    if (plate) {
        const auto [width, height] = image_.access().size();
        const auto pixel = exactPixel(*plate, star, turn);
        if (pixel && pixel->x >= 0 && pixel->x <= width && pixel->y >= 0 && pixel->y <= height) {
            marks_.TargetX = pixel->x;
            marks_.TargetY = pixel->y;
            marks_.arcMinutesPerPixel = arcMinutesPerPixel(*plate);
            tellTarget();
            return;
        }
    }
    services_.log.AddToLog("No plate after the slew: the mark stays where the star was");
}

void StarPointing::tellTarget() {
    services_.log.AddToLog("Target X = " + formatNumber(marks_.TargetX, "0") +
                           ", Target Y = " + formatNumber(marks_.TargetY, "0"));
}

void StarPointing::drawPath() {
    services_.log.AddToLog("Star is on Plate");
    tellTarget();
    overlays_.DrawLineOnImage(platform::toInt32(marks_.StarX), platform::toInt32(marks_.StarY),
                              platform::toInt32(marks_.TargetX), platform::toInt32(marks_.TargetY));
    Indicators::switchOff(panel_.lblSolve);
}

void StarPointing::check() {
    services_.loop.yield();
    if (state_.StopRequested || state_.AppUnloading) throw Ended{};
}

}  // namespace vantrel::correction
