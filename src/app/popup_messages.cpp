#include "app/popup_messages.h"

#include "app/stored_position.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::app {

using namespace platform;

namespace {

constexpr Milliseconds kLifetime{5000};
constexpr Milliseconds kTimerInterval{250};
constexpr const char* kPositionKey = "PopupMsg";

}  // namespace

PopupMessages::PopupMessages(EventLoop& loop, engine::SettingsPort& settings, engine::LogPort& log,
                             engine::RunState& state, frmPopupMsg& window, const TextBox& txtMsgDisplayTime)
    : loop_(loop),
      settings_(settings),
      log_(log),
      state_(state),
      window_(window),
      txtMsgDisplayTime_(txtMsgDisplayTime),
      timer_(loop, kTimerInterval) {
    window_.onLoad = [this] { Form_Load(); };
    window_.onActivate = [this] { Form_Activate(); };
    window_.onDeactivate = [this] { savePosition(window_, settings_, kPositionKey); };
    window_.onClick = [this] { Form_Click(); };
    window_.onUnload = [this] { timer_.setEnabled(false); };
    timer_.onTick = [this] { Timer1_Timer(); };
}

void PopupMessages::ShowPopupMessage(const std::string& text, double seconds) {
    if (silent_) return;
    loop_.yield();
    window_.unload();
    loop_.yield();
    history_.push_back({loop_.clock().utc(), text, seconds});
    settings_.SaveMainSetting("PopupTimer", toText(seconds));
    window_.txtMsg.setText(text);
    onShown(text);
    window_.show();
    loop_.yield();
}

void PopupMessages::ClosePopupMessage(const std::optional<std::string>& ifItShows) {
    if (ifItShows && window_.txtMsg.text() != *ifItShows) return;
    if (window_.shown()) onTakenBack();
    window_.unload();
}

double PopupMessages::displaySeconds() const { return leadingNumber(txtMsgDisplayTime_.text()); }

void PopupMessages::Form_Load() {
    moveMode_ = false;
    if (!state_.StopRequested) return;
    window_.txtMsg.setText("");
    window_.unload();
}

void PopupMessages::Form_Activate() {
    if (moveMode_) return;
    window_.SizeForm_TextBox();
    restorePosition(window_, settings_, kPositionKey);
    closesAt_ = loop_.clock().sinceStart() + kLifetime;
    timer_.setEnabled(true);
}

void PopupMessages::Timer1_Timer() {
    if (!state_.StopRequested && loop_.clock().sinceStart() < closesAt_) return;
    clearAndClose();
    moveMode_ = false;
}

void PopupMessages::Form_Click() {
    try {
        if (!moveMode_) {
            window_.setTitle("Move popup (click again)");
            timer_.setEnabled(false);
            moveMode_ = true;
        } else {
            SaveFormPosition();
            clearAndClose();
        }
    } catch (...) {
        report(" frmPopupMsg sub Form_Click");
    }
}

void PopupMessages::SaveFormPosition() {
    try {
        savePosition(window_, settings_, kPositionKey);
    } catch (...) {
        report(" frmPopupMsg sub SaveFormPosition");
    }
}

void PopupMessages::clearAndClose() {
    timer_.setEnabled(false);
    window_.setTitle("");
    window_.txtMsg.setText("");
    window_.unload();
}

void PopupMessages::report(const std::string& label) {
    state_.LastMessage = errorReport(currentError(), label);
    log_.AddToLog(state_.LastMessage);
}

}  // namespace vantrel::app
