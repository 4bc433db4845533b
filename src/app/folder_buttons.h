// The "..." buttons beside the log and the image folder.
#pragma once

#include "app/message_log.h"
#include "app/setup_panel.h"
#include "platform/dialogs.h"

namespace vantrel::app {

class FolderButtons {
  public:
    FolderButtons(SetupPanel& panel, platform::Dialogs& dialogs, engine::SettingsPort& settings,
                  MessageLog& log, engine::MessagePort& messages);

  private:
    /// The folder that the operator chose, shown in the box and stored; empty when cancelled.
    std::string choose(const char* title, platform::TextBox& box, const char* key);

    platform::Dialogs& dialogs_;
    engine::SettingsPort& settings_;
};

}  // namespace vantrel::app
