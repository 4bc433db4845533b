#include "qt/form_window.h"

#include <QCloseEvent>
#include <QPointer>
#include <QStyle>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <sstream>
#include <string>
#include <utility>

#include "qt/mnemonics.h"
#include "qt/parts.h"
#include "qt/translation.h"

namespace vantrel::qt {
namespace {

const char* const kSizes = "WindowSizes";

}  // namespace

FormWindow::FormWindow(platform::Form& form, const Front& front, Qt::WindowFlags flags)
    : QWidget(nullptr, flags),
      form_(form),
      front_(front),
      alwaysOnTop_(flags.testFlag(Qt::WindowStaysOnTopHint)),
      windowPlace_(*this, front.loop, [this](const QRect& place) {
          const platform::Rectangle now{place.x(), place.y(), place.width(), place.height()};
          const platform::Rectangle before = std::exchange(followed_, now);
          front_.barrier.run([&] {
              if (before.width != now.width || before.height != now.height) rememberSize(now);
              form_.placeByOperator(followed_);
          });
      }) {
    setAutoFillBackground(true);
}

FormWindow::~FormWindow() = default;

QWidget& FormWindow::scrolledPage() {
    auto* const page = new QWidget;
    auto* const frame = new QVBoxLayout(this);
    frame->setContentsMargins({});
    frame->addWidget(new ScrollPage(page));
    return *page;
}

void FormWindow::bind() {
    binding_ = std::make_unique<Binding>(form_, *this, front_);
    assignMnemonics(*this);
    const QSize room(form_.screen().workArea().width, form_.screen().workArea().height);
    // Widgets that were never seen get their look, and with it their size, only now.
    for (QWidget* widget : findChildren<QWidget*>()) {
        widget->ensurePolished();
        widget->updateGeometry();
    }
    QSize needed = layout()->totalSizeHint();
    if (needed.height() > room.height()) needed.rwidth() += style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    needed = needed.boundedTo(room).expandedTo(layout()->totalMinimumSize());
    platform::Rectangle place = form_.place();
    place.width = std::max(place.width, needed.width());
    place.height = std::max(place.height, needed.height());
    if (const auto size = rememberedSize()) {
        const QSize possible = size->boundedTo(room).expandedTo(layout()->totalMinimumSize());
        place.width = possible.width();
        place.height = possible.height();
    }
    form_.setPlace(place);
    formChanged_ = form_.changed.subscribe([this] { followForm(); });
    // After windows that are about to open.
    formRaised_ = form_.raised.subscribe([this] {
        front_.loop.post([window = QPointer<FormWindow>(this)] {
            if (window && window->isVisible()) window->raise();
        });
    });
    followForm();
}

void FormWindow::followForm() {
    const QString title = inWords(form_.titleWords());
    if (windowTitle() != title) setWindowTitle(title);
    followPlace();
    followOnTop();
    if (!form_.shown()) {
        if (isVisible()) hide();
        return;
    }
    if (isVisible())
        comeForward();
    else
        open();
}

/// A form that was just shown is about to be placed, by the code that showed it.
void FormWindow::open() {
    if (std::exchange(opening_, true)) return;
    front_.loop.post([window = QPointer<FormWindow>(this)] {
        if (!window) return;
        window->opening_ = false;
        if (!window->form_.shown()) return;
        window->show();
        window->comeForward();
    });
}

void FormWindow::comeForward() {
    if (activating_ || form_.screen().shownForms().back() != &form_ || isActiveWindow()) return;
    raise();
    if (!testAttribute(Qt::WA_ShowWithoutActivating)) activateWindow();
}

void FormWindow::bringToFront() {
    if (!isVisible()) return;
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

QSize FormWindow::wantedSize() const {
    return layout()->totalSizeHint().expandedTo(leastSize()).grownBy(windowPlace_.frame());
}

QSize FormWindow::leastSize() const { return layout()->totalMinimumSize().grownBy(windowPlace_.frame()); }

void FormWindow::standIn(const QRect& place) {
    setWindowState(windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen));
    const QSize inside = place.size().shrunkBy(windowPlace_.frame());
    form_.setPlace({place.left(), place.top(), inside.width(), inside.height()});
}

void FormWindow::rememberSize(const platform::Rectangle& place) {
    if (front_.sizes == nullptr) return;
    front_.sizes->write(kSizes, form_.name(),
                        std::to_string(place.width) + " " + std::to_string(place.height));
}

/// Nothing for a text that isn't two sizes.
std::optional<QSize> FormWindow::rememberedSize() const {
    if (front_.sizes == nullptr) return std::nullopt;
    std::optional<QSize> size;
    front_.barrier.run([&] {
        std::istringstream text(front_.sizes->read(kSizes, form_.name()).value_or(""));
        int width = 0, height = 0;
        if (text >> width >> height && width > 0 && height > 0) size.emplace(width, height);
    });
    return size;
}

void FormWindow::followPlace() {
    const platform::Rectangle place = form_.place();
    if (place == followed_) return;
    followed_ = place;
    windowPlace_.put({place.left, place.top, place.width, place.height});
}

void FormWindow::followOnTop() {
    const bool onTop = alwaysOnTop_ || form_.onTop();
    const Qt::WindowFlags flags =
        onTop ? windowFlags() | Qt::WindowStaysOnTopHint : windowFlags() & ~Qt::WindowStaysOnTopHint;
    if (flags == windowFlags()) return;
    // Not setWindowFlags, which would hide the window first.
    overrideWindowFlags(flags);
    if (windowHandle() != nullptr) windowHandle()->setFlags(flags);
}

void FormWindow::closeEvent(QCloseEvent* event) {
    event->ignore();  // the form decides
    windowPlace_.tellNow();
    front_.loop.post([&form = form_] { form.closeByOperator(); });
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
