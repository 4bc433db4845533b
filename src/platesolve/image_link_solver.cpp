#include "platesolve/image_link_solver.h"

#include <string>

#include "engine/angles.h"
#include "platesolve/plate_error.h"
#include "platform/sexagesimal.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using namespace platform;
using engine::PlateSolution;

namespace {

/// The keyword's number; throws OperationError when the header has none.
double keyword(AutomationObject& image, const char* name) {
    const Value value = image.get("FITSKeyword", {name});
    if (value.isEmpty()) throw runTimeError(error_number::kTypeMismatch);
    return value.toDouble();
}

}  // namespace

ImageLinkSolver::ImageLinkSolver(const SolveServices& services, const PlateSolvePanel& panel,
                                 std::function<ObjectRef()> ccdSoftImage)
    : services_(services), panel_(panel), ccdSoftImage_(std::move(ccdSoftImage)) {}

std::optional<PlateSolution> ImageLinkSolver::solve(double raOffset, double decOffset) {
    engine::RunState& state = services_.state;
    const ObjectRef ccdSoftImage = ccdSoftImage_();
    AutomationObject& image = required(ccdSoftImage);
    writeStartPosition(image, engine::NormalizeRAHours(state.ExposureRA + raOffset),
                       state.ExposureDec + decOffset);

    const char* errorText = "Error when performing image link";
    try {
        image.put("ScaleInArcsecondsPerPixel", toNumber(panel_.txtTheSkyImageScale.text()));
        image.call("InsertWCS");

        errorText = "Error while getting image link results";
        PlateSolution solution;
        solution.ra = keyword(image, "CRVAL1") / 15;
        solution.dec = keyword(image, "CRVAL2");
        services_.log.AddToLog(" RA = " + platform::raText(solution.ra));
        services_.log.AddToLog(" Dec = " + platform::decText(solution.dec));
        reportPlateError(solution.ra, solution.dec, state, services_.log);
        state.PlateSolved = true;

        solution.CD1_1 = keyword(image, "CD1_1");
        solution.CD1_2 = keyword(image, "CD1_2");
        solution.CD2_1 = keyword(image, "CD2_1");
        solution.CD2_2 = keyword(image, "CD2_2");
        return solution;
    } catch (const OperationError&) {
        if (!state.AppUnloading) services_.log.AddToLog(errorText);
        state.PlateSolved = false;
        return std::nullopt;
    }
}

void ImageLinkSolver::writeStartPosition(AutomationObject& image, double ra, double dec) {
    engine::UtilityPort& utility = services_.utility;
    const std::string raText = utility.HoursToHMS(ra, " ", " ");
    const std::string decText = (dec >= 0 ? "+" : "") + utility.DegreesToDMS(dec, " ", " ", " ");
    image.put("FITSKeyword", raText, {"OBJCTRA"});
    image.put("FITSKeyword", decText, {"OBJCTDEC"});
    services_.log.AddToLog("Plate Solve Attempt at RA = " + utility.DegreesToHMS(ra * 15) +
                           "  Dec = " + utility.DegreesToDMS(dec));
}

}  // namespace vantrel::platesolve
