// The whole program in a test: virtual time, the built-in instruments but no imaging program behind a
// journal, an empty home.
#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/application.h"
#include "app/message_log.h"
#include "observatory/observatory.h"
#include "platform/desktop_windows.h"
#include "platform/queued_event_loop.h"
#include "platform/recording_host.h"
#include "support/full_disk.h"
#include "support/recording_dialogs.h"
#include "support/temp_folder.h"

namespace vantrel::test {

struct PlainDesktop : platform::Desktop {
    explicit PlainDesktop(const platform::FolderMap& map) : folders(map) {}

    std::optional<platform::SystemVersion> systemVersion() const override { return version; }
    std::string systemName() const override { return "Starry Linux 3"; }
    std::string userProfile() const override { return "C:\\Users\\me"; }
    bool open(const std::string& file) override {
        if (canOpen) opened.push_back(file);
        return canOpen;
    }
    std::string registryValue(const std::string& /*key*/, const std::string& name) const override {
        const auto found = registry.find(name);
        return found == registry.end() ? "" : found->second;
    }
    std::filesystem::path shownFor(const std::string& file) const override { return folders.real(file); }

    const platform::FolderMap& folders;
    bool canOpen = true;
    std::map<std::string, std::string> registry;  // by the values' names
    std::optional<platform::SystemVersion> version = platform::SystemVersion{};
    std::vector<std::string> opened;
};

inline observatory::ObservatorySeams seams(platform::DesktopWindows& windows) {
    observatory::ObservatorySeams seams;
    seams.desktop = &windows;
    return seams;
}

struct ProgramWorld {
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:00Z"), std::chrono::hours{1}};
    platform::QueuedEventLoop loop{time};
    TempFolder home;
    platform::FolderMap folders{home.path()};
    FullDisk settings;
    platform::ClassRegistry classes;
    platform::DesktopWindows windows;
    observatory::Observatory observatory{loop, folders, 1, seams(windows)};
    platform::RecordingHost host{classes};
    platform::Screen screen{{0, 0, 1920, 1080}};
    RecordingDialogs dialogs;
    PlainDesktop desktop{folders};
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
    /// The operator's imaging program, with a small camera.
    void useImagingProgram(const std::string& name) {
        observatory.install(classes);
        settings.write("PolarAlign", "ImagingSoftware", name);
        observatory.openImagingProgram(settings);
        const platform::ObjectRef simulator = classes.create("AxisSimulator.Telescope");
        simulator->put("CameraWidth", 24);
        simulator->put("CameraHeight", 16);
    }
    void close() {
        form("frmMain").closeByOperator();
        pass(1);
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
