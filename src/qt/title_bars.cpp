#include "qt/title_bars.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <utility>

namespace vantrel::qt {

TitleBars::TitleBars(Theme& theme, Paint paint) : theme_(theme), paint_(std::move(paint)) {
    qApp->installEventFilter(this);
    look_ = theme.changed.subscribe([this] {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible()) paint_(*window, theme_);
    });
}

bool TitleBars::eventFilter(QObject* object, QEvent* event) {
    auto* const widget = event->type() == QEvent::Show ? qobject_cast<QWidget*>(object) : nullptr;
    if (widget != nullptr && widget->isWindow()) paint_(*widget, theme_);
    return false;
}

}  // namespace vantrel::qt
