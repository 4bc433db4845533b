// What every link of the devices stands on in tests: virtual time, an automation host that records and fails
// on demand, and the rest of the program as fakes.
#pragma once

#include <string>

#include "devices/link_services.h"
#include "platform/class_registry.h"
#include "platform/form.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "support/journal.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/recording_messages.h"

namespace vantrel::test {

struct DeviceWorld {
    /// Forgets what happened so far.
    void forget() {
        host.takeJournal("*");
        log.lines.clear();
        messages.shown.clear();
    }
    /// From now on the member fails, `times` times (-1: for ever).
    void fail(const std::string& progId, const std::string& member, int number, long times = -1) {
        host.inject({progId, member, {number, "Fake.Source", "it broke"}, std::nullopt, 0, times});
    }
    /// From now on the member returns this.
    void answer(const std::string& progId, const std::string& member, const platform::Value& value) {
        host.inject({progId, member, {0, "", ""}, value, 0, -1});
    }
    /// The operator presses Stop when so many seconds have passed.
    [[nodiscard]] platform::TimerHandle stopAfter(double seconds) {
        return loop.after(milliseconds(seconds), [this] { state.StopRequested = true; });
    }
    void pass(double seconds) { loop.sleep(milliseconds(seconds)); }
    /// Seconds since the start.
    double elapsed() const { return static_cast<double>(time.sinceStart().count()) / 1000; }

    static platform::Milliseconds milliseconds(double seconds) {
        return platform::Milliseconds{static_cast<long>(seconds * 1000)};
    }

    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{2}};
    platform::QueuedEventLoop loop{time};
    platform::ClassRegistry registry;
    platform::RecordingHost host{registry};
    MemorySettingsPort settings;
    RecordingLog log;
    RecordingMessages messages;
    engine::RunState state;
    platform::Screen screen{{0, 0, 1920, 1040}};
    devices::LinkServices services{loop, host, settings, log, messages, state};
};

}  // namespace vantrel::test
