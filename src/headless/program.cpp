#include "headless/program.h"

#include <algorithm>
#include <fstream>

#include "app/message_log.h"
#include "observatory/catalogs/curl_downloads.h"
#include "platform/text.h"

namespace vantrel::headless {

using namespace platform;

namespace {

constexpr Rectangle kWorkArea{0, 0, 1920, 1040};

UserPaths pathsFor(const Options& options) {
    return options.home ? pathsBelow(*options.home) : desktopPaths(processEnvironment);
}

/// "MaxIm" of "MaxIm.CCDCamera": the classes of one program are installed together.
std::string programOf(const std::string& progId) { return toLower(progId.substr(0, progId.find('.'))); }

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

Program::Program(const Options& options, TimeKeeper& time, CommandSource& commands, ReplySink& replies)
    : options_(options),
      loop_(time),
      paths_(pathsFor(options)),
      user_(paths_),
      guard_(paths_.lock),
      dialogs_(time),
      desktop_(user_.folders, user_.userProfile),
      screen_(kWorkArea),
      observatory_(loop_, user_.folders, options.seed, seams()),
      automation_(classes_),
      application_({loop_, automation_, user_.settings, user_.folders, screen_, dialogs_, desktop_, windows_,
                    [this](const std::string& folder) { observatory_.provideTestImage(folder); }},
                   guard_),
      session_({application_, loop_, screen_, user_.settings, automation_, classes_, user_.folders, dialogs_,
                observatory_.imaging().documents()},
               commands, replies, options.virtualTime) {
    observatory_.install(classes_);
    if (options.installed) keepInstalled(*options.installed);
    if (options.settings) preloadSettings(*options.settings);
    if (!options.installed) openImagingProgram();
}

bool Program::run(const std::function<bool()>& endRequested) {
    loop_.setOnFailure([this] { application_.reportFailure(); });
    loop_.setAttendant([&] {
        if (endRequested()) session_.close();
        session_.attend();
    });
    if (!options_.virtualTime) session_.beginStart();
    loop_.runUntil([this] { return session_.over(); });
    return session_.endedWell();
}

observatory::ObservatorySeams Program::seams() {
    observatory::ObservatorySeams seams;
    seams.chooser = [this](const std::string& title, const std::vector<observatory::DriverChoice>& drivers,
                           const std::string& current) {
        std::vector<Dialogs::Choice> choices;
        for (const auto& driver : drivers) choices.push_back({driver.progId, driver.description});
        return dialogs_.choose(title, choices, current);
    };
    seams.desktop = &windows_;
    seams.downloads = std::make_shared<observatory::CurlDownloads>();
    seams.downloadCache = paths_.cache;
    seams.stopping = [this] { return application_.stopping(); };
    return seams;
}

/// The helper classes come with the drivers' platform, not with a program.
void Program::keepInstalled(const std::vector<std::string>& progIds) {
    constexpr const char* kHelpers = "driverhelper";
    for (const std::string& progId : progIds)
        if (!classes_.isInstalled(progId)) throw UsageError("--installed names an unknown class: " + progId);
    for (const std::string& progId : classes_.installed()) {
        const bool kept = programOf(progId) == kHelpers ||
                          std::any_of(progIds.begin(), progIds.end(), [&](const std::string& wanted) {
                              return programOf(wanted) == programOf(progId);
                          });
        if (!kept) classes_.uninstall(progId);
    }
}

void Program::openImagingProgram() {
    try {
        observatory_.openImagingProgram(user_.settings);
    } catch (const std::exception&) {
        // Settings that can't be read are the application's to report.
    }
}

void Program::preloadSettings(const std::filesystem::path& file) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error("Can't read " + file.string());
    const Json sections = Json::parse(stream, nullptr, false);
    if (!sections.is_object()) throw std::runtime_error(file.string() + " holds no JSON object");
    for (const auto& [section, keys] : sections.items()) {
        if (!keys.is_object())
            throw std::runtime_error(file.string() + ": \"" + section + "\" is not a section with keys");
        for (const auto& [key, value] : keys.items())
            user_.settings.write(section, key, toSettingText(value));
    }
}

}  // namespace vantrel::headless
