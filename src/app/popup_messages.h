// Short notices in a small window that closes by itself; at most one at a time.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/frm_popup_msg.h"
#include "engine/ports.h"
#include "engine/run_state.h"
#include "platform/event_loop.h"
#include "platform/timer.h"

namespace vantrel::app {

class PopupMessages : public engine::MessagePort {
  public:
    PopupMessages(platform::EventLoop& loop, engine::SettingsPort& settings, const engine::RunState& state,
                  frmPopupMsg& window, const platform::TextBox& txtMsgDisplayTime);

    void ShowPopupMessage(const std::string& text, double seconds) override;
    void ClosePopupMessage(const std::optional<std::string>& ifItShows) override;
    double displaySeconds() const override;

    struct Shown {
        platform::Instant time;
        std::string text;
        double seconds;
    };
    /// Every message so far.
    const std::vector<Shown>& history() const { return history_; }

    void stopTimer() { timer_.setEnabled(false); }

  private:
    void load();
    void activate();
    void tick();
    void click();
    void savePosition();

    platform::EventLoop& loop_;
    engine::SettingsPort& settings_;
    const engine::RunState& state_;
    frmPopupMsg& window_;
    const platform::TextBox& txtMsgDisplayTime_;
    platform::Timer timer_;
    platform::Milliseconds closesAt_{0};
    bool moveMode_ = false;
    std::vector<Shown> history_;
};

}  // namespace vantrel::app
