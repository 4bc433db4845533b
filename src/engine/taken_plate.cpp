#include "engine/taken_plate.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {
namespace {

/// The mean of angles that lie close together, on a circle of `full`.
template <typename Number>
double meanAngle(std::span<const TakenPlate> plates, double full, Number&& numberOf) {
    const double first = numberOf(plates.front());
    double sum = 0;
    for (const TakenPlate& plate : plates) sum += std::remainder(numberOf(plate) - first, full);
    return first + sum / static_cast<double>(plates.size());
}

PlateCovariance operator*(const PlateCovariance& c, double factor) {
    return {c.eastEast * factor, c.eastNorth * factor, c.northNorth * factor,
            c.rollRoll * factor, c.eastRoll * factor,  c.northRoll * factor};
}

PlateCovariance operator+(const PlateCovariance& a, const PlateCovariance& b) {
    return {a.eastEast + b.eastEast, a.eastNorth + b.eastNorth, a.northNorth + b.northNorth,
            a.rollRoll + b.rollRoll, a.eastRoll + b.eastRoll,   a.northRoll + b.northRoll};
}

}  // namespace

Plate seenPlate(const TakenPlate& taken) {
    Plate seen{.hourAngle = NormalizeRAHours(taken.exposedLst - taken.ra),
               .declination = taken.dec,
               .positionAngle = taken.positionAngle,
               .covariance = taken.covariance};
    if (taken.pointing == Pointing::kByMount)
        seen.reading = {NormalizeRAHours(taken.scopeHA + taken.exposedLst - taken.lst), taken.sentTo.Dec};
    return seen;
}

PlatePosition writtenPlate(const TakenPlate& taken) {
    return {NormalizeRAHours(taken.lst - taken.ra), taken.dec, taken.scopeHA};
}

TakenPlate meanOf(std::span<const TakenPlate> exposures) {
    TakenPlate mean = exposures.front();
    if (exposures.size() == 1) return mean;
    const auto hours = [&](double TakenPlate::*member) {
        return meanAngle(exposures, 24, [member](const TakenPlate& plate) { return plate.*member; });
    };
    mean.lst = NormalizeRAHours(hours(&TakenPlate::lst));
    mean.scopeHA = NormalizeRAHours(hours(&TakenPlate::scopeHA));
    mean.exposedLst = hours(&TakenPlate::exposedLst);
    mean.ra = NormalizeRAHours(hours(&TakenPlate::ra));
    mean.raError = NormalizeRAHours(hours(&TakenPlate::raError));
    const auto degrees = [&](auto&& numberOf) { return meanAngle(exposures, 360, numberOf); };
    mean.dec = degrees([](const TakenPlate& plate) { return plate.dec; });
    mean.decError = degrees([](const TakenPlate& plate) { return plate.decError; });
    const bool turned = std::ranges::all_of(
        exposures, [](const TakenPlate& plate) { return plate.positionAngle.has_value(); });
    mean.positionAngle = std::nullopt;
    if (turned) mean.positionAngle = degrees([](const TakenPlate& plate) { return *plate.positionAngle; });
    const auto count = static_cast<double>(exposures.size());
    mean.covariance = {};
    for (const TakenPlate& plate : exposures)
        mean.covariance = mean.covariance + plate.covariance * (1 / (count * count));
    return mean;
}

EquatorialPosition expectedOffset(std::span<const TakenPlate> before, int number) {
    if (before.empty()) return {.RA = 0, .Dec = 0};
    const TakenPlate& last = before.back();
    if (before.size() == 1) return {.RA = last.raError, .Dec = last.decError};
    const TakenPlate& earlier = before[before.size() - 2];
    const double steps = static_cast<double>(number - last.number) / (last.number - earlier.number);
    return {.RA = NormalizeRAHours(last.raError + steps * signedHours(last.raError - earlier.raError)),
            .Dec = last.decError + steps * (last.decError - earlier.decError)};
}

}  // namespace vantrel::engine
