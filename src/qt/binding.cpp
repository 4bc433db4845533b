#include "qt/binding.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <stdexcept>
#include <string>

#include "qt/gauge_bar.h"
#include "qt/picture_widget.h"
#include "qt/plate_view.h"
#include "qt/tie.h"

namespace vantrel::qt {

QString plainCaption(QString text) {
    text.replace("\r\n", "\n");
    constexpr QChar kPlaceholder(0xFFFF);
    text.replace("&&", kPlaceholder).remove('&').replace(kPlaceholder, '&');
    return text;
}

namespace {

[[noreturn]] void fail(const platform::Form& form, const std::string& name, const std::string& what) {
    throw std::logic_error(form.name() + "." + name + ": " + what);
}

std::unique_ptr<Tie> tieFor(platform::Control& control, QWidget& window, const Front& front) {
    const QString name = QString::fromStdString(control.name());
    if (auto* const item = dynamic_cast<platform::MenuItem*>(&control)) {
        auto* const action = window.findChild<QAction*>(name);
        if (action == nullptr) fail(control.form(), control.name(), "the window has no such action");
        return tieMenuItem(*item, *action, front);
    }
    auto* const widget = window.findChild<QWidget*>(name);
    if (widget == nullptr) fail(control.form(), control.name(), "the window has no such widget");
    if (auto made = tieChoice(control, widget, front)) return made;
    if (auto made = tieText(control, widget, front)) return made;
    fail(control.form(), control.name(), "the widget is of another kind");
}

template <typename... Kinds>
bool isOneOf(const QObject& object) {
    return ((dynamic_cast<const Kinds*>(&object) != nullptr) || ...);
}

/// Whether the object is of a kind that shows a control. The toolkit names some of its own inner widgets.
bool isBindable(const QObject& object) {
    return !object.objectName().startsWith("qt_") &&
           isOneOf<QLabel, QPushButton, QCheckBox, QRadioButton, QLineEdit, QPlainTextEdit, QComboBox,
                   QGroupBox, PictureWidget, PlateView, GaugeBar, QAction>(object);
}

void checkNames(const platform::Form& form, const QWidget& window) {
    for (const QObject* object : window.findChildren<QObject*>()) {
        const QString name = object->objectName();
        if (!name.isEmpty() && isBindable(*object) && form.find(name.toStdString()) == nullptr)
            fail(form, name.toStdString(), "the form has no such control");
    }
}

}  // namespace

Binding::Binding(platform::Form& form, QWidget& window, const Front& front) {
    checkNames(form, window);
    for (platform::Control* control : form.controls()) ties_.push_back(tieFor(*control, window, front));
    const auto showAll = [this] {
        for (const auto& tie : ties_) tie->show();
    };
    showAll();
    themeChanged_ = front.theme.changed.subscribe(showAll);
}

Binding::~Binding() = default;

}  // namespace vantrel::qt
