// Everything around the program: what a front prepares and the program runs on.
#pragma once

#include <functional>
#include <string>

#include "platform/automation.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/folder_map.h"
#include "platform/form.h"
#include "platform/outside_call.h"
#include "platform/settings_root.h"
#include "platform/window_system.h"

namespace vantrel::platform {

class CameraHardware;
class LivePages;
class PictureSolver;

struct Machine {
    EventLoop& loop;
    AutomationHost& automation;
    SettingsRoot& settings;
    const FolderMap& folders;
    Screen& screen;
    Dialogs& dialogs;
    Desktop& desktop;
    WindowSystem& windows;
    /// Puts the solver's test image into the image folder, which exists, unless it is there already. May be
    /// left out.
    std::function<void(const std::string& folder)> provideTestImage = {};
    /// Whether a member of an outside program is waiting for its answer; nothing where none takes any time.
    OutsideCalls* outsideCalls = nullptr;
    /// Lets the operator choose the camera of the built-in camera program. May be left out.
    std::function<void()> chooseCamera = {};
    /// Tells the operator of real mounts that could be used, while a simulated one is. May be left out.
    std::function<void()> offerMounts = {};
    /// The camera of the built-in camera program. May be left out.
    std::function<const CameraHardware&()> camera = {};
    /// The camera's settings have changed, and it is told so; may wait. May be left out.
    std::function<void()> adjustCamera = {};
    /// Solves pictures that came from anywhere. May be left out.
    PictureSolver* pictureSolver = nullptr;
    /// Pages for the browsers of the local network. Nothing where there is no network.
    LivePages* pages = nullptr;
};

}  // namespace vantrel::platform
