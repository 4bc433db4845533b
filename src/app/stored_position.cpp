#include "app/stored_position.h"

#include "platform/place_form.h"
#include "platform/text.h"

namespace vantrel::app {

void restorePosition(platform::Form& form, engine::SettingsPort& settings, const std::string& window) {
    const std::string top = settings.GetMainSetting(window + "Top", std::to_string(form.place().top));
    const std::string left = settings.GetMainSetting(window + "Left", std::to_string(form.place().left));
    platform::PlaceFormOnScreen(form, platform::leadingNumber(top), platform::leadingNumber(left));
}

void savePosition(const platform::Form& form, engine::SettingsPort& settings, const std::string& window) {
    settings.SaveMainSetting(window + "Top", std::to_string(form.place().top));
    settings.SaveMainSetting(window + "Left", std::to_string(form.place().left));
}

}  // namespace vantrel::app
