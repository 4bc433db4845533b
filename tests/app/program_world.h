// The whole program in a test: virtual time, the built-in instruments but no imaging program behind a
// journal, an empty home.
#pragma once

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "app/application.h"
#include "app/message_log.h"
#include "observatory/observatory.h"
#include "platform/desktop_windows.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "support/recording_dialogs.h"
#include "support/temp_folder.h"

namespace vantrel::test {

struct PlainDesktop : platform::Desktop {
    std::optional<platform::SystemVersion> systemVersion() const override { return version; }
    std::string userProfile() const override { return "C:\\Users\\me"; }
    bool open(const std::string& file) override {
        if (canOpen) opened.push_back(file);
        return canOpen;
    }
    bool canOpen = true;
    std::optional<platform::SystemVersion> version = platform::SystemVersion{};
    std::vector<std::string> opened;
};

/// Settings whose disk can fail, and that tell what is written.
struct FullDisk : platform::MemorySettings {
    bool full = false;
    bool missing = false;
    std::string unwritable;  // a section
    platform::Signal<const std::string&, const std::string&> written;

    void open() override {
        if (missing) throw std::system_error(std::make_error_code(std::errc::io_error));
    }
    void write(const std::string& section, const std::string& key, const std::string& value) override {
        if (full || section == unwritable) throw std::runtime_error("No space left");
        MemorySettings::write(section, key, value);
        written.emit(section + "." + key, value);
    }
};

struct ProgramWorld {
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{1}};
    platform::QueuedEventLoop loop{time};
    TempFolder home;
    platform::FolderMap folders{home.path()};
    FullDisk settings;
    platform::ClassRegistry classes;
    observatory::Observatory observatory{loop, folders, 1};
    platform::RecordingHost host{classes};
    platform::Screen screen{{0, 0, 1920, 1080}};
    RecordingDialogs dialogs;
    PlainDesktop desktop;
    platform::DesktopWindows windows;
    std::optional<app::Application> program;

    ProgramWorld() {
        observatory.install(classes);
        for (const char* imaging :
             {"MaxIm.CCDCamera", "MaxIm.Application", "MaxIm.Document", "CCDSoft.Camera", "CCDSoft.Image"})
            classes.uninstall(imaging);
        loop.setOnFailure([this] { program->reportFailure("event loop"); });
    }

    void build() {
        program.emplace(platform::Machine{loop, host, settings, folders, screen, dialogs, desktop, windows});
    }
    void start() {
        build();
        program->start();
    }
    void pass(double seconds) { loop.sleep(platform::Milliseconds(static_cast<long>(seconds * 1000))); }

    platform::Form& form(const std::string& name) { return *screen.find(name); }
    template <typename Kind>
    Kind& control(const std::string& path) {
        auto* found = dynamic_cast<Kind*>(screen.findControl(path));
        if (found == nullptr) throw std::logic_error("no such control: " + path);
        return *found;
    }
    std::string text(const std::string& path) { return control<platform::TextBox>(path).text(); }

    /// The log without its times.
    std::vector<std::string> logged() {
        std::vector<std::string> texts;
        for (const std::string& line : program->log().lines()) texts.push_back(line.substr(11));
        return texts;
    }
    bool hasLogged(const std::string& text) {
        const auto texts = logged();
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
};

}  // namespace vantrel::test
