#include "qt/program.h"

#include <QAction>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QUrl>
#include <algorithm>
#include <stdexcept>

#include "app/message_log.h"
#include "observatory/simulator_setup.h"
#include "qt/arrangement.h"
#include "qt/parts.h"
#include "qt/picture_drop.h"
#include "qt/window_place.h"

namespace vantrel::qt {
namespace {

/// The simulator's mount stands as one does that was set up by eye. Arc-minutes.
void standAskew(platform::AutomationHost& classes) {
    const auto simulator = classes.create("AxisSimulator.Telescope");
    simulator->put("PolarAzimuthError", 18.0);
    simulator->put("PolarElevationError", -11.0);
}

}  // namespace

Program::Program(const Front& front, platform::UserMachine& user, platform::Dialogs& dialogs,
                 std::uint64_t seed)
    : front_(front),
      settings_(user.settings),
      desktop_(user.folders, user.userProfile),
      screen_(workArea()),
      station_({front.loop, user.folders, settings_, dialogs, user.cache, user.data,
                [this] { return application_.stopping(); },
                [this](const std::string& progId) {
                    if (progId == "AxisSimulator.Telescope") simulatorForm_.show();
                },
                [this](const std::string& line) { application_.log().AddToLog(line); },
                [](const std::string& address) {
                    return QDesktopServices::openUrl(QUrl(QString::fromStdString(address)));
                },
                [this] { return application_.pictureFacts(); }, front.network, front.network},
               seed),
      application_(station_.machine(station_.classes(), screen_, desktop_)),
      chance_(seed),
      simulatorForm_(screen_),
      simulatorPanel_(front.loop, station_.classes(), chance_, simulatorForm_) {
    front_.sizes = &settings_;
    standAskew(station_.classes());
    // Settings that can't be read or stored are the application's to report.
    front.barrier.run([this] {
        firstStart_ = settings_.isEmpty();
        if (firstStart_) observatory::storeSimulatorSetup(settings_);
        station_.restoreDevices();
        station_.openImagingProgram();
        look_ = followNightVision(settings_, front_.theme);
    });
}

void Program::openWindows() {
    windows_ = windowsFor(screen_, front_);
    imageWindow_ = std::make_unique<ImageWindow>(imaging().documents(), settings_, front_);
    imageWindow_->followGuide(application_.starGuide());
    addInstrumentsMenu();
    addArrangeItem();
    for (const char* form : {"frmMain", "frmWelcome", "frmSolvePicture"})
        solveDroppedPictures(window(form), screen_, front_);
    solveDroppedPictures(*imageWindow_, screen_, front_);
}

/// Closed or not, it comes by itself no more: the simulator's set-up is stored by then.
void Program::start() {
    application_.start();
    const bool running = !application_.ended() && !application_.stopping();
    if (!firstStart_ || !running || !screen_.find("frmMain")->shown()) return;
    arrangeWindows();
    screen_.find("frmWelcome")->show();
}

void Program::addArrangeItem() {
    auto* const menu = window("frmMain").findChild<QMenu*>("menuSet");
    QAction* const arrange = menu->addAction(Text::tr("Arrange Windows"));
    arrange->setObjectName("mnuArrange");
    QObject::connect(arrange, &QAction::triggered, &window("frmMain"),
                     [this] { front_.loop.post([this] { arrangeWindows(); }); });
}

void Program::arrangeWindows() {
    QVector<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) screens.append(screen->availableGeometry());
    FormWindow& main = window("frmMain");
    FormWindow& log = window("frmLog");
    FormWindow& simulator = window("frmSimulator");
    constexpr double kNarrow = 0.96;  // of the main window's width: all of it can be seen
    const QSize mainSize = main.wantedSize();
    const QSize mainLeast(qRound(mainSize.width() * kNarrow), main.leastSize().height());
    const Arrangement places = arranged(screens, {.main = mainSize,
                                                  .mainLeast = mainLeast,
                                                  .imageLeast = imageWindow_->leastSize(),
                                                  .log = log.wantedSize(),
                                                  .logLeast = log.leastSize(),
                                                  .simulator = simulator.wantedSize(),
                                                  .simulatorLeast = simulator.leastSize()});
    main.standIn(places.main);
    log.standIn(places.log);
    simulator.standIn(places.simulator);
    imageWindow_->standIn(places.image);
    if (log.isVisible()) log.raise();  // where it shares its place with others
}

/// The main window's form knows neither the imaging program nor the simulator: the ways to their windows are
/// the front's own.
void Program::addInstrumentsMenu() {
    auto* const bar = window("frmMain").findChild<QMenuBar*>();
    auto* const menu = new QMenu(Text::tr("Instruments"), bar);
    bar->insertMenu(bar->actions().last(), menu);
    QAction* const image = menu->addAction(Text::tr("Camera Image"));
    image->setShortcut(QKeySequence("Ctrl+I"));
    QObject::connect(image, &QAction::triggered, imageWindow_.get(),
                     [this] { front_.barrier.run([this] { imageWindow_->showByOperator(); }); });
    QAction* const simulator = menu->addAction(Text::tr("Simulator"));
    simulator->setObjectName("mnuSimulator");
    simulator->setShortcut(QKeySequence("Ctrl+M"));
    QObject::connect(simulator, &QAction::triggered, &window("frmMain"),
                     [this] { front_.loop.post([this] { simulatorForm_.show(); }); });
}

FormWindow& Program::window(const std::string& formName) const {
    const auto found = std::find_if(windows_.begin(), windows_.end(),
                                    [&](const auto& window) { return window->form().name() == formName; });
    if (found == windows_.end()) throw std::out_of_range(formName);
    return **found;
}

}  // namespace vantrel::qt
