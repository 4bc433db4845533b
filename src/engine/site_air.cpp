#include "engine/site_air.h"

#include "platform/text.h"

namespace vantrel::engine {
namespace {

std::optional<double> within(std::optional<double> number, double least, double greatest) {
    return number && *number >= least && *number <= greatest ? number : std::nullopt;
}

}  // namespace

Air siteAir(SettingsPort& settings, TelescopePort& telescope) {
    if (!telescope.looksThroughAir()) return kNoAir;
    const auto typed = [&](const char* key) {
        return platform::parseNumber(settings.GetSetting("PolarAlign", key, ""));
    };
    constexpr double kLowest = -450, kHighest = 6000;  // metres
    auto height = within(typed("SiteHeight"), kLowest, kHighest);
    if (!height) height = within(telescope.siteHeightIfKnown(), kLowest, kHighest);
    Air air = standardAir(height.value_or(0));
    const auto pressure = within(typed("AirPressure"), 400, 1100);
    const auto temperature = within(typed("AirTemperature"), -70, 60);
    air.pressure = pressure.value_or(air.pressure);
    air.temperature = temperature.value_or(air.temperature);
    constexpr double kMeasured = 0.02;  // what thermometer, barometer and the layers above leave
    if (pressure && temperature) air.uncertainty = kMeasured;
    return air;
}

}  // namespace vantrel::engine
