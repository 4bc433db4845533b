// How long the main window goes without a repaint while the whole program measures, in real time:
//
//     repaint-gaps [WIDTH HEIGHT]
//
// The simulator's camera has so many pixels (26 million at first). Something in the main window asks for a
// repaint every 5 ms; printed is how long the first one took after the click on Run, and the longest gaps
// between two, with what was going on before each.
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <vector>

#include "platform/user_machine.h"
#include "qt/program.h"
#include "qt/qt_event_loop.h"
#include "qt/unattended_run.h"
#include "support/temp_folder.h"

namespace {

using namespace vantrel;

struct Gap {
    qint64 milliseconds;
    std::string during;
};

/// A dot in the corner of the window that is repainted whenever the program lets it.
class Pulse : public QWidget {
  public:
    explicit Pulse(QWidget& window) : QWidget(&window) {
        setGeometry(0, 0, 2, 2);
        show();
        connect(&beat_, &QTimer::timeout, this, [this] { update(); });
        beat_.start(5);
        since_.start();
    }
    std::function<std::string()> doing = [] { return std::string(); };
    void restart() {
        gaps.clear();
        first_ = -1;
        since_.start();
        before_ = doing();
    }
    qint64 first() const { return first_; }
    std::vector<Gap> gaps;

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const qint64 gap = since_.restart();
        if (first_ < 0) first_ = gap;
        gaps.push_back({gap, before_});
        before_ = doing();
    }

  private:
    QTimer beat_;
    QElapsedTimer since_;
    qint64 first_ = -1;
    std::string before_;
};

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const double width = argc > 2 ? std::atof(argv[1]) : 6248, height = argc > 2 ? std::atof(argv[2]) : 4176;
    const test::TempFolder home;
    platform::UserMachine user(platform::pathsBelow(home.path()));
    const qt::Barrier barrier([](const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); });
    qt::QtEventLoop loop(barrier);
    qt::Theme theme;
    std::ostringstream boxes;
    qt::UnattendedDialogs dialogs(boxes);
    qt::Program program({loop, theme, barrier, true}, user, dialogs, 1);
    user.settings.write("PolarAlign", "ExposeInterval", "1");
    user.settings.write("PolarAlign", "DelayAfterSlew", "0");
    const auto simulator = program.automation().create("AxisSimulator.Telescope");
    simulator->put("CameraWidth", width);
    simulator->put("CameraHeight", height);
    simulator->put("FocalLength", 600.0);
    program.openWindows();
    loop.post([&] { program.application().start(); });
    auto& main = program.window("frmMain");
    const auto caption = [&](const char* name) {
        return main.findChild<QLabel*>(name)->text().toStdString();
    };
    auto* const run = main.findChild<QPushButton*>("cmdRun");
    auto* const next = main.findChild<QPushButton*>("cmdNext");
    auto* const skip = main.findChild<QPushButton*>("cmdSkip");
    loop.runUntil([&] { return main.isVisible() && !program.application().busy() && run->isEnabled(); });
    Pulse pulse(main);
    pulse.doing = [&] { return caption("lblProgress"); };
    loop.runUntil([&] { return pulse.gaps.size() > 5; });
    pulse.restart();
    loop.post([run] { run->click(); });
    std::vector<Gap> gaps;
    const auto answer = loop.every(platform::Milliseconds{100}, [&] {
        if (!next->isEnabled() || !gaps.empty()) return;
        gaps = pulse.gaps;
        skip->click();
    });
    loop.runUntil([&] { return !gaps.empty() && run->isEnabled(); });
    std::printf("%.0f x %.0f pixels: first repaint %lld ms after the click; %s\n", width, height,
                static_cast<long long>(pulse.first()), caption("lblTotal").c_str());
    std::sort(gaps.begin(), gaps.end(),
              [](const Gap& a, const Gap& b) { return a.milliseconds > b.milliseconds; });
    for (std::size_t i = 0; i < std::min<std::size_t>(12, gaps.size()); ++i)
        std::printf("%6lld ms  %s\n", static_cast<long long>(gaps[i].milliseconds), gaps[i].during.c_str());
    program.application().close();
    loop.runUntil([&] { return program.application().ended(); });
    return EXIT_SUCCESS;
}
