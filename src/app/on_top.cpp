#include "app/on_top.h"

#include <string>

#include "app/settings_store.h"

namespace vantrel::app {
namespace {

std::string keyOf(const platform::Form& form) { return form.name() + "OnTop"; }

}  // namespace

bool wantsOnTop(const platform::Form& form, engine::SettingsPort& settings) {
    return settings.GetSetting(kProgramSection, keyOf(form), "False") == "True";
}

void toggleOnTop(const platform::Form& form, engine::SettingsPort& settings) {
    settings.SaveSetting(kProgramSection, keyOf(form), wantsOnTop(form, settings) ? "False" : "True");
}

void applyOnTop(platform::Form& form, platform::MenuItem& item, engine::SettingsPort& settings) {
    const bool onTop = wantsOnTop(form, settings);
    item.setChecked(onTop);
    form.setOnTop(onTop);
}

}  // namespace vantrel::app
