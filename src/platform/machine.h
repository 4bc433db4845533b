// Everything around the program in one hand: what a front prepares and the program runs on.
#pragma once

#include "platform/automation.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/folder_map.h"
#include "platform/form.h"
#include "platform/settings_root.h"
#include "platform/window_system.h"

namespace vantrel::platform {

struct Machine {
    EventLoop& loop;
    AutomationHost& automation;
    SettingsRoot& settings;
    const FolderMap& folders;
    Screen& screen;
    Dialogs& dialogs;
    Desktop& desktop;
    WindowSystem& windows;
};

}  // namespace vantrel::platform
