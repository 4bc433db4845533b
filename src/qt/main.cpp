// vantrel: the program with its windows.

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QLocale>
#include <QPixmap>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <random>
#include <utility>

#include "app/startup.h"
#include "app/version.h"
#include "platform/instance_guard.h"
#include "platform/paths.h"
#include "platform/termination.h"
#include "qt/display_watch.h"
#include "qt/parts.h"
#include "qt/program.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_event_loop.h"
#include "qt/title_bars.h"
#include "qt/translation.h"
#include "qt/unattended_run.h"
#include "qt/watched_settings.h"

namespace {

using namespace vantrel;
using qt::Text;

struct Options {
    std::optional<std::filesystem::path> home;
    bool measure = false;
    QString png;
};

Options parseOptions(const QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        Text::tr("Measures a telescope mount's polar alignment and guides its correction."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption home("home", Text::tr("Keep settings, drives and documents in <folder>."),
                                  Text::tr("folder"));
    const QCommandLineOption measure(
        "measure", Text::tr("Measure once with the built-in simulator, without windows, and print the log."));
    const QCommandLineOption png("png", Text::tr("Write the polar plot of --measure as a picture."),
                                 Text::tr("file"));
    parser.addOptions({home, measure, png});
    parser.process(application);
    Options options;
    if (parser.isSet(home)) options.home = platform::pathOf(parser.value(home).toStdString());
    options.measure = parser.isSet(measure);
    options.png = parser.value(png);
    return options;
}

platform::UserPaths pathsFor(const Options& options) {
    return options.home ? platform::pathsBelow(*options.home)
                        : platform::desktopPaths(platform::processEnvironment);
}

std::uint64_t tonightsNoise() { return std::random_device{}(); }

/// A folder that goes when this does.
class TemporaryHome {
  public:
    TemporaryHome()
        : folder_(std::filesystem::temp_directory_path() / ("vantrel-" + std::to_string(tonightsNoise()))) {
        std::filesystem::create_directories(folder_);
    }
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    const std::filesystem::path& folder() const { return folder_; }

  private:
    std::filesystem::path folder_;
};

/// What leaves a handler goes into the log as long as there is one, and to the terminal.
struct FailureReport {
    app::Application* application = nullptr;
    void operator()(const std::string& text) const {
        std::cerr << "vantrel: " << text << std::endl;
        if (application != nullptr) application->reportFailure("event loop");
    }
};

int measureOnce(const Options& options) {
    const TemporaryHome temporary;
    platform::UserMachine user(platform::pathsBelow(options.home.value_or(temporary.folder())));
    FailureReport report;
    const qt::Barrier barrier([&report](const std::string& text) { report(text); });
    qt::QtEventLoop loop(barrier);
    qt::Theme theme;
    qt::UnattendedDialogs dialogs(std::cerr);
    qt::Program program({loop, theme, barrier, true}, user, dialogs, tonightsNoise());
    report.application = &program.application();
    qt::UnattendedRun run(program, loop, std::cout);
    loop.post([&run] { run.begin(); });
    loop.runUntil([&] { return run.over() || program.application().ended(); });
    bool written = true;
    if (!options.png.isEmpty() && run.measured()) {
        qt::PolarPlotWindow window(*program.screen().find("frmPolarPlot"), {loop, theme, barrier});
        written = window.grab().save(options.png);
    }
    if (!written) std::cerr << "vantrel: can't write " << options.png.toStdString() << std::endl;
    program.application().close();
    loop.runUntil([&] { return program.application().ended(); });
    return run.measured() && written ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// How often the program looks whether another instance asks for the window, or the system for the end.
constexpr platform::Milliseconds kLookOutside{250};

int runWithWindows(const Options& options) {
    const platform::UserPaths paths = pathsFor(options);
    platform::UserMachine user(paths);
    FailureReport report;
    const qt::Barrier barrier([&report](const std::string& text) { report(text); });
    qt::QtEventLoop loop(barrier);
    qt::Theme theme;
    const qt::TitleBars titleBars(theme);
    qt::QtDialogs dialogs(user.folders, user.userProfile + "\\Documents");
    // What is said before there is a window doesn't dazzle either.
    barrier.run([&] { theme.setNight(qt::nightVision(user.settings)); });
    platform::LockFileGuard guard(paths.lock);
    if (!app::mayStart(guard, dialogs)) return EXIT_FAILURE;
    const platform::TerminationWatch termination;
    qt::Program program({loop, theme, barrier, true}, user, dialogs, tonightsNoise());
    report.application = &program.application();
    program.openWindows();
    const auto outside = loop.every(kLookOutside, [&] {
        if (termination.requested()) {
            if (QWidget* const dialog = QApplication::activeModalWidget()) dialog->close();
            program.application().close();
        }
        if (guard.activationRequested()) program.window("frmMain").bringToFront();
    });
    loop.post([&program] { program.start(); });
    loop.runUntil([&program] { return program.application().ended(); });
    return program.application().failed() ? EXIT_FAILURE : EXIT_SUCCESS;
}

/// Nothing of these needs a display.
bool needsNoDisplay(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        for (const char* option : {"--measure", "--help", "-h", "--version", "-v"})
            if (std::strcmp(argv[i], option) == 0) return true;
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (needsNoDisplay(argc, argv)) qputenv("QT_QPA_PLATFORM", "offscreen");
    std::optional<qt::DisplayWatch> watch(std::in_place);
    QApplication application(argc, argv);
    watch.reset();
    QApplication::setApplicationName("vantrel");
    QApplication::setApplicationDisplayName(app::kProgramTitle);
    QApplication::setApplicationVersion(QString::fromStdString(app::versionText()));
    QApplication::setDesktopFileName("com.kestavo.vantrel");
    QApplication::setWindowIcon(QIcon(":/vantrel.png"));
    QApplication::setQuitOnLastWindowClosed(false);
    qt::speak(application, QLocale());
    try {
        const Options options = parseOptions(application);
        return options.measure ? measureOnce(options) : runWithWindows(options);
    } catch (const std::exception& error) {
        std::cerr << "vantrel: " << error.what() << std::endl;
        return EXIT_FAILURE;
    }
}
