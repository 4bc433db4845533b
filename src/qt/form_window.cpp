#include "qt/form_window.h"

#include <QCloseEvent>
#include <QLayout>
#include <QWindow>
#include <algorithm>

#include "qt/mnemonics.h"
#include "qt/translation.h"

namespace vantrel::qt {

FormWindow::FormWindow(platform::Form& form, const Front& front, Qt::WindowFlags flags)
    : QWidget(nullptr, flags), form_(form), front_(front) {
    setAutoFillBackground(true);
}

FormWindow::~FormWindow() = default;

void FormWindow::bind() {
    binding_ = std::make_unique<Binding>(form_, *this, front_);
    assignMnemonics(*this);
    const QSize room(form_.screen().workArea().width, form_.screen().workArea().height);
    const QSize needed = layout()->totalSizeHint().boundedTo(room).expandedTo(layout()->totalMinimumSize());
    platform::Rectangle place = form_.place();
    place.width = std::max(place.width, needed.width());
    place.height = std::max(place.height, needed.height());
    form_.setPlace(place);
    formChanged_ = form_.changed.subscribe([this] { followForm(); });
    followForm();
}

void FormWindow::followForm() {
    const QString title = inWords(form_.name(), form_.title());
    if (windowTitle() != title) setWindowTitle(title);
    followPlace();
    followOnTop();
    if (!form_.shown()) {
        if (isVisible()) hide();
        return;
    }
    if (!isVisible()) show();
    const auto& shown = form_.screen().shownForms();
    if (activating_ || shown.back() != &form_ || testAttribute(Qt::WA_ShowWithoutActivating)) return;
    if (!isActiveWindow()) {
        raise();
        activateWindow();
    }
}

void FormWindow::bringToFront() {
    if (!isVisible()) return;
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void FormWindow::followPlace() {
    const platform::Rectangle place = form_.place();
    if (place == followed_) return;
    followed_ = place;
    move(place.left, place.top);
    resize(place.width, place.height);
}

void FormWindow::followOnTop() {
    const Qt::WindowFlags flags =
        form_.onTop() ? windowFlags() | Qt::WindowStaysOnTopHint : windowFlags() & ~Qt::WindowStaysOnTopHint;
    if (flags == windowFlags()) return;
    // Not setWindowFlags, which would hide the window first.
    overrideWindowFlags(flags);
    if (windowHandle() != nullptr) windowHandle()->setFlags(flags);
}

void FormWindow::tellPlace() {
    if (!isVisible() || isMinimized()) return;
    const platform::Rectangle place{pos().x(), pos().y(), width(), height()};
    if (place == followed_) return;
    followed_ = place;
    front_.barrier.run([&] { form_.placeByOperator(place); });
}

void FormWindow::closeEvent(QCloseEvent* event) {
    event->ignore();  // the form decides
    front_.loop.post([&form = form_] { form.closeByOperator(); });
}

void FormWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    tellPlace();
}

void FormWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    tellPlace();
}

void FormWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) form_.setMinimised(isMinimized());
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        front_.loop.post([this] {
            activating_ = true;
            if (form_.shown()) form_.activate();
            activating_ = false;
        });
    }
}

}  // namespace vantrel::qt
