// A plate of a measurement: where the mount was sent, what was seen there, and when.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/axis/plate.h"
#include "engine/polar_error.h"
#include "engine/ports.h"
#include "engine/sky_geometry.h"
#include "platform/clock.h"

namespace vantrel::engine {

/// Who turned the axis there: the mount, which tells where it stands, or the operator.
enum class Pointing : std::int8_t { kByMount, kByHand };

struct TakenPlate {
    int number = 0;             // along the arc, from 1
    EquatorialPosition sentTo;  // of the mount, hours and degrees; by hand, where it may look
    Pointing pointing = Pointing::kByMount;
    double lst = 0;  // hours, read at the position
    platform::Milliseconds readAt{0};
    double scopeHA = 0;                     // hours
    double exposedLst = 0;                  // hours, in the middle of the exposure
    double ra = 0;                          // hours, solved
    double dec = 0;                         // degrees, solved
    double raError = 0;                     // hours in [0, 24), solved less exposure position
    double decError = 0;                    // degrees
    std::optional<double> positionAngle{};  // degrees, of the camera's rows
    PlateCovariance covariance{};
};

/// As the axis is estimated from it: in the middle of the exposure, with the mount's reading if there is one.
Plate seenPlate(const TakenPlate& taken);

/// As the written calculation takes it: at the time of the reading. Not of a plate turned to by hand.
PlatePosition writtenPlate(const TakenPlate& taken);

/// Several exposures of one plate as one, each number their mean. At least one.
TakenPlate meanOf(std::span<const TakenPlate> exposures);

/// Where solved and commanded position will differ at a plate of this number, going on as between the last
/// two plates; hours in [0, 24) and degrees. As at the plate before when there is only one, 0 without any.
EquatorialPosition expectedOffset(std::span<const TakenPlate> before, int number);

}  // namespace vantrel::engine
