// What the small parts of the program stand on in tests: virtual time, settings in memory, a screen, folders.
#pragma once

#include "app/settings_store.h"
#include "engine/run_state.h"
#include "platform/folder_map.h"
#include "platform/form.h"
#include "platform/queued_event_loop.h"
#include "support/full_disk.h"
#include "support/recording_dialogs.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"
#include "support/temp_folder.h"

namespace vantrel::test {

struct AppWorld {
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z")};
    platform::QueuedEventLoop loop{time};
    TempFolder home;
    platform::FolderMap folders{home.path()};
    FullDisk memory;
    RecordingDialogs dialogs;
    app::SettingsStore settings{memory, dialogs};
    platform::Screen screen{{0, 0, 1920, 1080}};
    engine::RunState state;

    void pass(double seconds) { loop.sleep(platform::Milliseconds(static_cast<long>(seconds * 1000))); }
};

}  // namespace vantrel::test
