#include "observatory/solver/plate_frame.h"

namespace vantrel::observatory {

PlateFrame PlateFrame::ofYear(double year) {
    PlateFrame frame(std::nullopt, year == 2000 ? std::nullopt : std::optional(precessionTo(year)));
    frame.year_ = year;
    return frame;
}

SkyPosition PlateFrame::fromCatalogue(SkyPosition icrs) const {
    if (date_) return date_->apparent(icrs);
    return mean_ ? positionOf(*mean_ * directionOf(icrs)) : icrs;
}

SkyPosition PlateFrame::toCatalogue(SkyPosition place) const {
    if (date_) return date_->catalogue(place);
    return mean_ ? positionOf(transposed(*mean_) * directionOf(place)) : place;
}

std::array<double, 4> PlateFrame::turned(const std::array<double, 4>& cd, SkyPosition icrs) const {
    constexpr double kStep = 0.01;  // degrees: small enough that the planes are flat
    const SkyPosition centre = fromCatalogue(icrs);
    const auto image = [&](PlanePosition step) {
        const auto moved = toTangentPlane(fromCatalogue(fromTangentPlane(step, icrs)), centre);
        return moved ? PlanePosition{moved->xi / kStep, moved->eta / kStep} : PlanePosition{};
    };
    const PlanePosition east = image({kStep, 0});
    const PlanePosition north = image({0, kStep});
    return {east.xi * cd[0] + north.xi * cd[2], east.xi * cd[1] + north.xi * cd[3],
            east.eta * cd[0] + north.eta * cd[2], east.eta * cd[1] + north.eta * cd[3]};
}

}  // namespace vantrel::observatory
