#include "qt/big_digits.h"

#include <QKeyEvent>
#include <QPainter>

#include "qt/translation.h"

namespace vantrel::qt {

BigDigits::BigDigits(correction::frmAdjust& form, QWidget& window) : QWidget(&window), form_(form) {
    setObjectName("bigDigits");
    setFocusPolicy(Qt::StrongFocus);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window);
    hide();
    window.installEventFilter(this);
    for (platform::Label* label : {&form.azimuth.lblArrow, &form.azimuth.lblMove, &form.elevation.lblArrow,
                                   &form.elevation.lblMove, &form.lblAge})
        changes_.push_back(label->changed.subscribe([this] { update(); }));
}

void BigDigits::toggle() {
    const bool shown = isVisible();
    window()->setWindowState(shown ? window()->windowState() & ~Qt::WindowFullScreen
                                   : window()->windowState() | Qt::WindowFullScreen);
    setGeometry(window()->rect());
    setVisible(!shown);
    if (shown) return;
    raise();
    setFocus();
}

/// Esc is this one's own while it has the keyboard: to the window it means to end adjusting.
bool BigDigits::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

bool BigDigits::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) setGeometry(window()->rect());
    return QWidget::eventFilter(watched, event);
}

void BigDigits::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) return toggle();
    QWidget::keyPressEvent(event);
}

void BigDigits::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const int line = height() * 2 / 5;
    int top = 0;
    for (const correction::frmAdjust::Adjuster* adjuster : {&form_.azimuth, &form_.elevation}) {
        const int arrow = width() / 6;
        paintLine(painter, {0, top, arrow, line}, adjuster->lblArrow, true);
        paintLine(painter, {arrow, top, width() - arrow, line}, adjuster->lblMove, true);
        top += line;
    }
    paintLine(painter, {0, top, width(), height() - top}, form_.lblAge, false);
}

/// As large as the place takes.
void BigDigits::paintLine(QPainter& painter, const QRect& place, const platform::Label& label,
                          bool bold) const {
    const QString text = inWords(label.captionWords());
    if (text.isEmpty()) return;
    constexpr int kTried = 100;  // pixels
    QFont font = this->font();
    font.setBold(bold);
    font.setPixelSize(kTried);
    const QSize tried = QFontMetrics(font).size(Qt::TextSingleLine, text);
    const double fits =
        0.9 * std::min(1.0 * place.width() / tried.width(), 1.0 * place.height() / tried.height());
    font.setPixelSize(std::max(1, static_cast<int>(kTried * fits)));
    painter.setFont(font);
    painter.setPen(
        palette().color(label.enabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter.drawText(place, Qt::AlignCenter | Qt::TextSingleLine, text);
}

}  // namespace vantrel::qt
