// Settings that tell when they are written, so that the windows' look follows its switch.
#pragma once

#include "platform/settings_root.h"
#include "platform/signal.h"

namespace vantrel::qt {

class WatchedSettings : public platform::SettingsRoot {
  public:
    explicit WatchedSettings(platform::SettingsRoot& settings) : settings_(settings) {}

    void open() override { settings_.open(); }
    bool hasSection(const std::string& section) const override { return settings_.hasSection(section); }
    std::optional<std::string> read(const std::string& section, const std::string& key) const override {
        return settings_.read(section, key);
    }
    void write(const std::string& section, const std::string& key, const std::string& value) override {
        settings_.write(section, key, value);
        written.emit(section, key);
    }
    void remove(const std::string& section, const std::string& key) override {
        settings_.remove(section, key);
        written.emit(section, key);
    }
    bool isEmpty() const override { return settings_.isEmpty(); }

    /// Told the section and the key.
    platform::Signal<const std::string&, const std::string&> written;

  private:
    platform::SettingsRoot& settings_;
};

/// Whether "Night vision colors" are chosen.
bool nightVision(const platform::SettingsRoot& settings);

/// The look follows "Night vision colors" and their brightness, from now on and whenever one is stored, for
/// as long as the subscription lives.
class Theme;
[[nodiscard]] platform::Subscription followNightVision(WatchedSettings& settings, Theme& theme);

}  // namespace vantrel::qt
