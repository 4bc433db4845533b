#include "hosts/alpaca/filter_wheel.h"

#include <stdexcept>

#include "hosts/server_text.h"

namespace vantrel::hosts::alpaca {

namespace {

using platform::Milliseconds;

constexpr std::size_t kMostFilters = 100;
constexpr int kTurning = -1;
constexpr Milliseconds kTimeToTurn{60'000};
constexpr Milliseconds kBetweenPositions{250};

}  // namespace

FilterWheel::FilterWheel(const Surroundings& surroundings, const DeviceRecord& device,
                         std::function<void(const DeviceRecord&)> moved)
    : surroundings_(surroundings), link_(surroundings, device, std::move(moved)) {}

void FilterWheel::connect() {
    link_.connect();
    filters_.clear();
    for (const Json& name : link_.get("names")) {
        if (filters_.size() == kMostFilters) break;
        const std::string text = name.is_string() ? oneLine(name.get_ref<const std::string&>()) : "";
        filters_.push_back(text.empty() ? "Filter " + std::to_string(filters_.size() + 1) : text);
    }
}

int FilterWheel::position() { return intMember({{"Position", link_.get("position")}}, "Position", kTurning); }

void FilterWheel::turnTo(int filter) {
    if (filter < 0 || static_cast<std::size_t>(filter) >= filters_.size())
        throw std::runtime_error(link_.name() + " has no filter number " + std::to_string(filter) + ".");
    if (position() == filter) return;
    link_.put("position", {{"Position", formText(filter)}});
    const Milliseconds start = surroundings_.loop.clock().sinceStart();
    while (position() != filter) {
        if (surroundings_.loop.clock().sinceStart() - start > kTimeToTurn)
            throw std::runtime_error(link_.name() + " didn't turn to the filter " +
                                     filters_[static_cast<std::size_t>(filter)] + ".");
        surroundings_.client.pause(kBetweenPositions);
    }
}

}  // namespace vantrel::hosts::alpaca
