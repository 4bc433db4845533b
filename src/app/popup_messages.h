// Short notices in a small window that closes by itself; at most one at a time.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/frm_popup_msg.h"
#include "engine/ports.h"
#include "engine/run_state.h"
#include "platform/event_loop.h"
#include "platform/timer.h"

namespace vantrel::app {

/// A message stays for five seconds, however long was asked for. A click on it stops that and lets the
/// operator move the window; the next click closes it, and later messages come where it stood.
class PopupMessages : public engine::MessagePort {
  public:
    PopupMessages(platform::EventLoop& loop, engine::SettingsPort& settings, engine::LogPort& log,
                  engine::RunState& state, frmPopupMsg& window, const platform::TextBox& txtMsgDisplayTime);

    /// Nothing stays visible while a stop is requested.
    void ShowPopupMessage(const std::string& text, double seconds) override;
    /// Silent, it shows nothing: the program is ending.
    void setSilent(bool silent) { silent_ = silent; }
    void ClosePopupMessage(const std::optional<std::string>& ifItShows) override;
    double displaySeconds() const override;

    struct Shown {
        platform::Instant time;
        std::string text;
        double seconds;
    };
    /// Every message so far.
    const std::vector<Shown>& history() const { return history_; }

    /// Told every message, and when the program takes back the one that is shown.
    std::function<void(const std::string& text)> onShown = [](const std::string& /*text*/) {};
    std::function<void()> onTakenBack = [] {};

    void stopTimer() { timer_.setEnabled(false); }

  private:
    void Form_Load();
    void Form_Activate();
    void Timer1_Timer();
    void Form_Click();
    void SaveFormPosition();
    void clearAndClose();
    void report(const std::string& label);

    platform::EventLoop& loop_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    engine::RunState& state_;
    frmPopupMsg& window_;
    const platform::TextBox& txtMsgDisplayTime_;
    platform::Timer timer_;
    platform::Milliseconds closesAt_{0};
    bool moveMode_ = false;
    bool silent_ = false;
    std::vector<Shown> history_;
};

}  // namespace vantrel::app
