#include "solver/plate_frame.h"

namespace vantrel::solver {

using sky::PlanePosition;
using sky::SkyPosition;
using sky::operator*;

PlateFrame PlateFrame::ofYear(double year) {
    PlateFrame frame(std::nullopt, year == 2000 ? std::nullopt : std::optional(sky::precessionTo(year)));
    frame.year_ = year;
    return frame;
}

SkyPosition PlateFrame::fromCatalogue(SkyPosition icrs) const {
    if (date_) return date_->apparent(icrs);
    return mean_ ? sky::positionOf(*mean_ * sky::directionOf(icrs)) : icrs;
}

SkyPosition PlateFrame::toCatalogue(SkyPosition place) const {
    if (date_) return date_->catalogue(place);
    return mean_ ? sky::positionOf(sky::transposed(*mean_) * sky::directionOf(place)) : place;
}

std::array<double, 4> PlateFrame::turned(const std::array<double, 4>& cd, SkyPosition icrs) const {
    constexpr double kStep = 0.01;  // degrees: small enough that the planes are flat
    const SkyPosition centre = fromCatalogue(icrs);
    const auto image = [&](PlanePosition step) {
        const auto moved = sky::toTangentPlane(fromCatalogue(sky::fromTangentPlane(step, icrs)), centre);
        return moved ? PlanePosition{moved->xi / kStep, moved->eta / kStep} : PlanePosition{};
    };
    const PlanePosition east = image({kStep, 0});
    const PlanePosition north = image({0, kStep});
    return {east.xi * cd[0] + north.xi * cd[2], east.xi * cd[1] + north.xi * cd[3],
            east.eta * cd[0] + north.eta * cd[2], east.eta * cd[1] + north.eta * cd[3]};
}

}  // namespace vantrel::solver
