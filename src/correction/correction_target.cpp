#include "correction/correction_target.h"

#include "engine/angles.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::NormalizeRAHours;
using engine::signedHours;

namespace {

std::string shown(double value) { return platform::formatNumber(value, "0.000000"); }

/// "Label = value" pairs as one log line.
std::string line(const std::string& first, double a, const std::string& second, double b) {
    return first + " = " + shown(a) + ", " + second + " = " + shown(b);
}

/// What the mount is off beside its axis error, given where the model of that error says it must point to see
/// the plate. The two differences are taken in opposite order; the code that applies them knows.
void noteOffsets(CorrectionTarget& target, const engine::EquatorialPosition& model,
                 const PointingSituation& s) {
    target.raOffset = NormalizeRAHours(model.RA - s.telescopeRA);
    target.decOffset = s.telescopeDec - model.Dec;
    target.log.push_back(line("RA Offset", signedHours(target.raOffset), "Dec Offset", target.decOffset));
}

void noteAim(CorrectionTarget& target) {
    target.log.push_back(
        line("Move To RA", NormalizeRAHours(target.moveTo.RA), "Move To Dec", target.moveTo.Dec));
}

void noteScope(CorrectionTarget& target) {
    target.log.push_back(
        line("TrueScope Move To RA", NormalizeRAHours(target.scope.RA), "Dec", target.scope.Dec));
}

}  // namespace

CorrectionTarget azimuthTarget(const PointingSituation& s) {
    CorrectionTarget target;
    target.log.push_back(line("Az Plate RA", s.plateRA, "Az Plate Dec", s.plateDec));
    noteOffsets(target,
                engine::TransformCoordinatesFromSkyToScope(s.plateRA, s.plateDec, s.lst, s.ErrorAmplitude,
                                                           s.ErrorAngle),
                s);

    const auto axis = engine::EquatorialToAltAz((360 - s.ErrorAngle) / 15, 90 - s.ErrorAmplitude, s.latitude);
    target.log.push_back(line("Axis Alt", axis.Alt, "Axis Az", axis.Az));
    const auto plate = engine::EquatorialToAltAz(s.lst - s.plateRA, s.plateDec, s.latitude);
    target.log.push_back(line("Plate Alt", plate.Alt, "Plate Az", plate.Az));

    const engine::HorizonPosition aim = {plate.Alt, plate.Az - 180 + axis.Az};
    target.log.push_back(line("Move To Alt", aim.Alt, "Move To Az", aim.Az));
    const auto move = engine::AltAzToEquatorial(aim.Alt, aim.Az, s.latitude);
    target.moveTo = {s.lst - move.ha, move.Dec};
    noteAim(target);

    target.scope = engine::TransformCoordinatesFromSkyToScope(target.moveTo.RA, target.moveTo.Dec, s.lst,
                                                              s.ErrorAmplitude, s.ErrorAngle);
    noteScope(target);
    return target;
}

CorrectionTarget elevationTarget(const PointingSituation& s) {
    CorrectionTarget target;
    target.log.push_back(line("Elevation Plate RA", s.plateRA, "Dec", s.plateDec));

    // After a perfect azimuth correction the axis would point at the meridian, as high as it does now.
    const auto axis = engine::EquatorialToAltAz(NormalizeRAHours((360 - s.ErrorAngle) / 15),
                                                90 - s.ErrorAmplitude, s.latitude);
    const auto meridian = engine::AltAzToEquatorial(axis.Alt, 180.0, s.latitude);
    const double errorAmplitude = 90 - meridian.Dec;

    noteOffsets(target,
                engine::TransformCoordinatesFromSkyToScope(s.plateRA, s.plateDec, s.lst, errorAmplitude,
                                                           meridian.ha * 15),
                s);
    target.log.push_back(line("Axis Alt", axis.Alt, "Axis Az", axis.Az));
    target.log.push_back(line("Merridian HA", meridian.ha, "Dec", meridian.Dec));
    target.log.push_back("Merridian Error Amplitude = " + shown(errorAmplitude));
    const auto plate = engine::EquatorialToAltAz(NormalizeRAHours(s.lst - s.plateRA), s.plateDec, s.latitude);
    target.log.push_back(line("Plate Alt", plate.Alt, "Plate Az", plate.Az));

    const bool above = meridian.ha <= 6 || meridian.ha >= 18;
    target.log.push_back(above ? "Axis points above Pole" : "Axis points below Pole");
    const auto move = engine::AltAzToEquatorial(plate.Alt, plate.Az,
                                                s.latitude + (above ? -errorAmplitude : errorAmplitude));
    target.moveTo = {NormalizeRAHours(s.lst - move.ha), move.Dec};
    noteAim(target);

    target.scope = engine::TransformCoordinatesFromSkyToScope(target.moveTo.RA, target.moveTo.Dec, s.lst,
                                                              errorAmplitude, above ? 0.0 : 180.0);
    noteScope(target);
    return target;
}

}  // namespace vantrel::correction
