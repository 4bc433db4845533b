// The program's forms without the program, their windows, and the light that these give off.
#pragma once

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QTabWidget>
#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <string>

#include "app/frm_about.h"
#include "app/frm_devices.h"
#include "app/frm_log.h"
#include "app/frm_main.h"
#include "app/frm_options.h"
#include "app/frm_popup_msg.h"
#include "app/frm_welcome.h"
#include "app/settings_store.h"
#include "correction/frm_adjust.h"
#include "correction/frm_history.h"
#include "correction/frm_polar_plot.h"
#include "devices/frm_select_cc_software.h"
#include "devices/frm_telescope.h"
#include "engine/frm_plates.h"
#include "engine/frm_preflight.h"
#include "observatory/panel/frm_simulator.h"
#include "platesolve/frm_pixel_scale.h"
#include "platesolve/frm_solve_picture.h"
#include "platform/queued_event_loop.h"
#include "qt/unattended_run.h"
#include "qt/windows.h"

namespace vantrel::qt {

struct Forms {
    explicit Forms(const platform::Rectangle& workArea = {0, 0, 1600, 1000}) : screen(workArea) {}

    platform::VirtualTime time{platform::Instant{}};
    platform::QueuedEventLoop loop{time};
    platform::Screen screen;
    app::frmMain main{screen};
    app::frmLog log{screen};
    app::frmPopupMsg popup{screen};
    correction::frmPolarPlot polarPlot{screen};
    correction::frmAdjust adjust{screen};
    correction::frmHistory history{screen};
    engine::frmPlates plates{screen};
    engine::frmPreflight preflight{screen};
    devices::frmTelescope telescope{screen};
    devices::frmSelectCCSoftware imagingSoftware{screen};
    platesolve::frmPixelScale pixelScale{screen};
    platesolve::frmSolvePicture solvePicture{screen};
    app::frmAbout about{screen};
    app::frmWelcome welcome{screen};
    observatory::frmSimulator simulator{screen};

    platform::MemorySettings stored;
    std::ostringstream boxes;
    UnattendedDialogs dialogs{boxes};
    app::SettingsStore settings{stored, dialogs};
    app::frmOptions options{screen, settings};
    app::frmDevices devices{screen, settings};

    Theme theme;
    std::string failures;  // what the barrier kept from the toolkit
    Barrier barrier{[this](const std::string& text) { failures += text; }};
    Front front{loop, theme, barrier};

    /// Puts the widgets' wishes through: queued handlers here, posted events there.
    void settle() {
        for (int turn = 0; turn < 3; ++turn) {
            QApplication::processEvents();
            loop.yield();
        }
    }

    /// Lets windows that were shown or moved come to rest.
    void rest() {
        settle();
        loop.sleep(std::chrono::seconds{1});
        settle();
    }
};

/// The widget of this name; throws when the window has none of the kind.
template <typename Widget>
Widget& widgetOf(const QWidget& window, const char* name) {
    auto* const found = window.findChild<Widget*>(name);
    if (found == nullptr) throw std::logic_error(std::string("no widget ") + name);
    return *found;
}

/// The toolkit's own test functions hold no button while they move.
inline void moveMouse(QWidget& widget, QPointF place, Qt::MouseButtons held = Qt::NoButton) {
    QMouseEvent move(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, held, {});
    QApplication::sendEvent(&widget, &move);
}

/// Every tab of a window that has tabs, else the window as it is.
template <typename Look>
void onEveryPage(const QWidget& window, Look&& look) {
    auto* const tabs = window.findChild<QTabWidget*>();
    for (int page = 0; page < (tabs == nullptr ? 1 : tabs->count()); ++page) {
        if (tabs != nullptr) tabs->setCurrentIndex(page);
        QApplication::processEvents();
        look();
    }
}

/// The most that the other two colours exceed what the night's reds (or greens) hold, over all pixels.
inline int foreignLight(const QImage& image, bool green = false) {
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            const int own = green ? qGreen(pixel) : qRed(pixel);
            const int other = green ? qRed(pixel) : qGreen(pixel);
            most = std::max(most, std::max(other, qBlue(pixel)) - own / 3 - 2);
        }
    return most;
}

}  // namespace vantrel::qt
