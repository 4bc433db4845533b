#include "app/log_desk.h"

#include <string>

#include "app/on_top.h"
#include "app/stored_position.h"
#include "platform/text.h"

namespace vantrel::app {
namespace {

constexpr const char* kPlaceKey = "Log";
constexpr int kSmallest = 100;  // pixels, of a size read from the settings
constexpr int kLargest = 20000;

int storedSize(engine::SettingsPort& settings, const std::string& key, int current) {
    const double stored = platform::leadingNumber(settings.GetMainSetting(key, std::to_string(current)));
    return stored >= kSmallest && stored <= kLargest ? static_cast<int>(stored) : current;
}

}  // namespace

LogDesk::LogDesk(frmLog& window, frmMain& main, engine::SettingsPort& settings, engine::LogPort& log)
    : window_(window), main_(main), settings_(settings) {
    window_.onLoad = [this] { Form_Load(); };
    // The front resizes the controls with the window, in proportion.
    window_.onResize = [this] {
        if (!outOfSight()) saveSize();
    };
    window_.onDeactivate = [this] { savePlace(); };
    window_.onUnload = [this] {
        if (!outOfSight()) savePlace();
    };
    window_.mnuClear.onClick = [&log] { log.AddToLog(""); };
    window_.mnuClose.onClick = [this] { window_.unload(); };
    window_.mnuOnTop.onClick = [this] { mnuOnTop_Click(); };
}

void LogDesk::Form_Load() {
    platform::Rectangle place = window_.place();
    place.height = storedSize(settings_, "LogHeight", place.height);
    place.width = storedSize(settings_, "LogWidth", place.width);
    window_.setPlace(place);
    restorePosition(window_, settings_, kPlaceKey);
    applyOnTop(window_, window_.mnuOnTop, settings_);
}

void LogDesk::mnuOnTop_Click() {
    toggleOnTop(window_, settings_);
    applyOnTop(window_, window_.mnuOnTop, settings_);
    applyOnTop(main_, main_.setup.mnuSetOnTop, settings_);
}

/// Desktops without a minimised state move such windows far away.
bool LogDesk::outOfSight() const {
    constexpr int kFarAway = 30000;  // pixels
    return window_.minimised() || window_.place().top >= kFarAway;
}

void LogDesk::savePlace() {
    savePosition(window_, settings_, kPlaceKey);
    saveSize();
}

void LogDesk::saveSize() {
    settings_.SaveMainSetting("LogHeight", std::to_string(window_.place().height));
    settings_.SaveMainSetting("LogWidth", std::to_string(window_.place().width));
}

}  // namespace vantrel::app
