#include "app/settings_store.h"

#include <system_error>

#include "platform/text.h"

namespace vantrel::app {

using platform::Dialogs;

namespace {

constexpr std::size_t kLongestValue = 1023;
constexpr const char* kMainSection = "Main";

}  // namespace

std::string SettingsStore::GetSetting(const std::string& section, const std::string& key,
                                      const std::string& defaultText) {
    ensureRoot();
    const auto stored = root_.read(section, key);
    if (!stored) return defaultText;
    std::string value = platform::firstCharacters(*stored, kLongestValue);
    if (!value.empty() && value.back() == '\0') value.pop_back();
    return value;
}

void SettingsStore::SaveSetting(const std::string& section, const std::string& key,
                                const std::string& value) {
    ensureRoot();
    const bool newSection = !section.empty() && !root_.hasSection(section);
    try {
        root_.write(section, key, value);
    } catch (const std::runtime_error&) {
        if (newSection)
            fail("Failed to open/create section key " + section + ".", Dialogs::Icon::kExclamation);
        fail("Failed to write config value " + key + " to registry section " + section + ".",
             Dialogs::Icon::kCritical);
    }
}

std::string SettingsStore::GetMainSetting(const std::string& key, const std::string& defaultText) {
    if (GetSetting(kMainSection, key, "").empty()) SaveSetting(kMainSection, key, defaultText);
    return GetSetting(kMainSection, key, "");
}

void SettingsStore::SaveMainSetting(const std::string& key, const std::string& value) {
    SaveSetting(kMainSection, key, value);
}

void SettingsStore::ensureRoot() {
    if (failed_) throw SettingsFailure("The settings have failed before");
    if (opened_) return;
    try {
        root_.open();
        opened_ = true;
    } catch (const std::system_error& error) {
        fail("Failed to open/create root registry key (" + std::to_string(error.code().value()) + ")",
             Dialogs::Icon::kCritical);
    }
}

void SettingsStore::fail(const std::string& text, Dialogs::Icon icon) {
    failed_ = true;
    const auto buttons =
        icon == Dialogs::Icon::kCritical ? Dialogs::Buttons::kOkCancel : Dialogs::Buttons::kOk;
    dialogs_.messageBox("", text, icon, buttons);
    if (onFailure) onFailure();
    throw SettingsFailure(text);
}

}  // namespace vantrel::app
