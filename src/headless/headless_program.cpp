#include "headless/headless_program.h"

#include <algorithm>

#include "app/message_log.h"
#include "platform/command_line.h"
#include "platform/text.h"
#include "platform/whole_file.h"

namespace vantrel::headless {

using namespace platform;

namespace {

constexpr Rectangle kWorkArea{0, 0, 1920, 1040};

UserPaths pathsFor(const Options& options) {
    return options.home ? pathsBelow(*options.home) : desktopPaths(processEnvironment);
}

}  // namespace

OperatedApplication::OperatedApplication(const Machine& machine, InstanceGuard& guard)
    : machine_(machine), guard_(guard), application_(machine) {}

void OperatedApplication::start() {
    if (app::mayStart(guard_, machine_.dialogs))
        application_.start();
    else
        refused_ = true;
}

bool OperatedApplication::asksDuringStart() const {
    const Form* question = machine_.screen.find("frmSelectCCSoftware");
    return question != nullptr && question->shown();
}

const std::vector<std::string>& OperatedApplication::logLines() const { return application_.log().lines(); }

const std::vector<app::PopupMessages::Shown>& OperatedApplication::popups() const {
    return application_.popups().history();
}

HeadlessProgram::HeadlessProgram(const Options& options, TimeKeeper& time, CommandSource& commands,
                                 ReplySink& replies)
    : options_(options),
      loop_(time),
      paths_(pathsFor(options)),
      user_(paths_),
      guard_(paths_.lock),
      dialogs_(time),
      desktop_(user_.folders, user_.userProfile),
      screen_(kWorkArea),
      station_({loop_,
                user_.folders,
                user_.settings,
                dialogs_,
                paths_.cache,
                paths_.data,
                [this] { return application_.stopping(); },
                {},
                [this](const std::string& line) { application_.tell(line); },
                {},
                [this] { return application_.pictureFacts(); },
                !options.virtualTime,
                !options.virtualTime},
               options.seed),
      automation_(station_.classes()),
      application_(station_.machine(automation_, screen_, desktop_), guard_),
      session_({application_, loop_, screen_, user_.settings, automation_, station_.classes(), user_.folders,
                dialogs_, station_.observatory().imaging().documents()},
               commands, replies, options.virtualTime) {
    if (options.installed) keepInstalled(*options.installed);
    if (options.settings) preloadSettings(*options.settings);
    restoreDevices();
    if (!options.installed) openImagingProgram();
}

bool HeadlessProgram::run(const std::function<bool()>& endRequested) {
    loop_.setOnFailure([this] { application_.reportFailure(); });
    loop_.setAttendant([&] {
        if (endRequested()) session_.close();
        session_.attend();
    });
    if (!options_.virtualTime) session_.beginStart();
    loop_.runUntil([this] { return session_.over(); });
    return session_.endedWell();
}

void HeadlessProgram::keepInstalled(const std::vector<std::string>& progIds) {
    try {
        station_.keepInstalled(progIds);
    } catch (const std::invalid_argument& unknown) {
        throw platform::UsageError(std::string("--installed names an unknown class: ") + unknown.what());
    }
}

void HeadlessProgram::openImagingProgram() {
    try {
        station_.openImagingProgram();
    } catch (const std::exception&) {
        // Settings that can't be read are the application's to report.
    }
}

void HeadlessProgram::restoreDevices() {
    try {
        station_.restoreDevices();
    } catch (const std::exception&) {
        // Settings that can't be read are the application's to report.
    }
}

void HeadlessProgram::preloadSettings(const std::filesystem::path& file) {
    constexpr std::size_t kMostBytes = 4'000'000;
    const Json sections = Json::parse(contentsOf(file, kMostBytes), nullptr, false);
    if (!sections.is_object()) throw std::runtime_error(file.string() + " holds no JSON object");
    for (const auto& [section, keys] : sections.items()) {
        if (!keys.is_object())
            throw std::runtime_error(file.string() + ": \"" + section + "\" is not a section with keys");
        for (const auto& [key, value] : keys.items())
            user_.settings.write(section, key, toSettingText(value));
    }
}

}  // namespace vantrel::headless
