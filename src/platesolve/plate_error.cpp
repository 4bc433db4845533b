#include "platesolve/plate_error.h"

#include "engine/angles.h"
#include "platform/text.h"

namespace vantrel::platesolve {

using platform::formatNumber;

void reportPlateError(double ra, double dec, engine::RunState& state, engine::LogPort& log) {
    const double raError = ra - state.ExposureRA;
    state.PlateRAError = engine::NormalizeRAHours(raError);
    state.PlateDecError = dec - state.ExposureDec;
    log.AddToLog(" RA Error = " + formatNumber(engine::signedHours(raError), "0.000000"));
    log.AddToLog(" Dec Error = " + formatNumber(state.PlateDecError, "0.000000"));
}

}  // namespace vantrel::platesolve
