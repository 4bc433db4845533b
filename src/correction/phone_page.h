// What the window Adjust shows, on a page that a telephone in the same network can read; and Stop.
#pragma once

#include <memory>
#include <string>

#include "correction/frm_adjust.h"
#include "engine/ports.h"
#include "platform/live_page.h"
#include "platform/timer.h"

namespace vantrel::correction {

/// The page is open while the window is and its box is ticked. Takes over the box's click, and hears of the
/// window's coming and going beside whoever does so already.
class PhonePage {
  public:
    /// `stop` is the main window's. Without `pages` there is no network.
    PhonePage(frmAdjust& form, platform::Button& stop, platform::EventLoop& loop,
              engine::SettingsPort& settings, engine::LogPort& log, platform::LivePages* pages);

  private:
    void follow();
    void open();
    void say(const std::string& words);
    void refresh();
    platform::LiveView view() const;

    frmAdjust& form_;
    platform::Button& stop_;
    engine::SettingsPort& settings_;
    engine::LogPort& log_;
    platform::LivePages* pages_;
    std::unique_ptr<platform::LivePage> page_;
    platform::LiveView shown_;
    platform::Timer look_;
};

}  // namespace vantrel::correction
