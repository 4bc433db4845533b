#include "qt/watched_settings.h"

#include "platform/text.h"
#include "qt/theme.h"

namespace vantrel::qt {
namespace {

constexpr const char* kSection = "PolarAlign";
constexpr const char* kSwitch = "GreenColors";
constexpr const char* kBrightness = "NightBrightness";

/// Three steps, the third is full.
double brightness(const platform::SettingsRoot& settings) {
    const double step = platform::leadingNumber(settings.read(kSection, kBrightness).value_or("3"));
    return step == 1 ? 0.45 : step == 2 ? 0.7 : 1;
}

}  // namespace

bool nightVision(const platform::SettingsRoot& settings) {
    return platform::leadingNumber(settings.read(kSection, kSwitch).value_or("0")) != 0;
}

platform::Subscription followNightVision(WatchedSettings& settings, Theme& theme) {
    const auto follow = [&settings, &theme] {
        theme.setNightBrightness(brightness(settings));
        theme.setNight(nightVision(settings));
    };
    follow();
    return settings.written.subscribe([follow](const std::string& section, const std::string& key) {
        if (platform::equalIgnoringCase(section, kSection) &&
            (platform::equalIgnoringCase(key, kSwitch) || platform::equalIgnoringCase(key, kBrightness)))
            follow();
    });
}

}  // namespace vantrel::qt
