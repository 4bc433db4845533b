#include "qt/watched_settings.h"

#include "platform/text.h"
#include "qt/theme.h"

namespace vantrel::qt {
namespace {

constexpr const char* kSection = "PolarAlign";
constexpr const char* kKey = "GreenColors";

}  // namespace

bool nightVision(const platform::SettingsRoot& settings) {
    return platform::leadingNumber(settings.read(kSection, kKey).value_or("0")) != 0;
}

platform::Subscription followNightVision(WatchedSettings& settings, Theme& theme) {
    theme.setNight(nightVision(settings));
    return settings.written.subscribe([&](const std::string& section, const std::string& key) {
        if (platform::equalIgnoringCase(section, kSection) && platform::equalIgnoringCase(key, kKey))
            theme.setNight(nightVision(settings));
    });
}

}  // namespace vantrel::qt
