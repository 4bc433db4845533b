// The whole program: the application, the built-in observatory around it, and windows for its forms.
#pragma once

#include <memory>
#include <vector>

#include "app/application.h"
#include "observatory/panel/simulator_panel.h"
#include "platform/user_machine.h"
#include "qt/image_window.h"
#include "qt/qt_desktop.h"
#include "qt/watched_settings.h"
#include "qt/windows.h"
#include "station/station.h"

namespace vantrel::qt {

class Program {
  public:
    /// What it is given must outlive it. All noise comes from the seed. On a machine where nothing is stored
    /// yet the built-in simulator's set-up is.
    Program(const Front& front, platform::UserMachine& user, platform::Dialogs& dialogs, std::uint64_t seed);

    app::Application& application() { return application_; }
    platform::Screen& screen() { return screen_; }
    platform::AutomationHost& automation() { return station_.classes(); }

    imaging::ImagingPrograms& imaging() { return station_.observatory().imaging(); }

    /// Gives every form its window, and the imaging program its own. Without them the program runs unseen.
    void openWindows();
    /// Starts the application, which returns when that is through. On a machine where nothing was stored the
    /// Welcome window is shown then.
    void start();
    /// The window of the form with this name; throws std::out_of_range when there is none.
    FormWindow& window(const std::string& formName) const;
    /// The imaging program's; only while there are windows.
    ImageWindow& imageWindow() const { return *imageWindow_; }

  private:
    void addInstrumentsMenu();
    void addArrangeItem();
    void arrangeWindows();

    Front front_;
    WatchedSettings settings_;
    bool firstStart_ = false;
    QtDesktop desktop_;
    platform::Screen screen_;
    station::Station station_;
    app::Application application_;
    observatory::NoiseSource chance_;
    observatory::frmSimulator simulatorForm_;
    observatory::SimulatorPanel simulatorPanel_;
    platform::Subscription look_;
    std::vector<std::unique_ptr<FormWindow>> windows_;
    std::unique_ptr<ImageWindow> imageWindow_;
};

}  // namespace vantrel::qt
