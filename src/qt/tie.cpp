#include "qt/tie.h"

#include <QWidget>
#include <utility>

#include "platform/form.h"
#include "qt/tips.h"
#include "qt/translation.h"

namespace vantrel::qt {
namespace {

void setRole(QPalette& palette, QPalette::ColorRole role, const QColor& color) {
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, role, color);
}

}  // namespace

Tie::Tie(platform::Control& control, const Front& front) : front_(front), control_(control) {
    changed_ = control.changed.subscribe([this] { show(); });
}

void Tie::post(std::function<void()> action) {
    front_.loop.post([action = std::move(action)] { action(); });
}

void Tie::showCommon(QWidget& widget) const {
    widget.setEnabled(control_.enabled());
    widget.setVisible(control_.visible());
    const QString own = inWords(control_.toolTipWords()).trimmed();
    widget.setToolTip(own.isEmpty() ? tipFor(control_.form().name(), control_.name()) : own);
}

void Tie::showColors(QWidget& widget, QPalette::ColorRole back, platform::Color usualBack,
                     QPalette::ColorRole fore, platform::Color usualFore) const {
    const Theme& theme = front_.theme;
    QPalette palette;
    const bool ownBack = control_.backColor() != usualBack;
    if (ownBack) setRole(palette, back, theme.surface(control_.backColor()));
    if (control_.foreColor() != usualFore)
        setRole(palette, fore, theme.ink(control_.foreColor()));
    else if (ownBack)
        setRole(palette, fore, theme.ink(platform::color::kBlack));
    widget.setPalette(palette);
}

}  // namespace vantrel::qt
