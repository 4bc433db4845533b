// One control and the widget or action that shows it.
//
// What the control holds is shown; what the operator does reaches the control. Clicks and choices go by way
// of the event loop, so that a procedure never runs inside the toolkit's own mouse and key handling.
#pragma once

#include <QObject>
#include <QPalette>
#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "platform/color.h"
#include "platform/controls.h"
#include "qt/front.h"

class QAction;
class QWidget;

namespace vantrel::qt {

class Tie : public QObject {
  public:
    Tie(platform::Control& control, const Front& front);

    /// Brings the widget to what the control holds. Called at every change of the control, too.
    virtual void show() = 0;

  protected:
    /// The operator did something that may start a procedure.
    void post(std::function<void()> action);
    /// The operator did something small that has to take effect before the next key.
    template <typename Action>
    void now(Action&& action) {
        front_.barrier.run(action);
    }

    void showCommon(QWidget& widget) const;
    /// Colours other than a control's usual ones are laid over the look's palette.
    void showColors(QWidget& widget, QPalette::ColorRole back, platform::Color usualBack,
                    QPalette::ColorRole fore, platform::Color usualFore) const;

  private:
    const Front& front_;
    platform::Control& control_;
    platform::Subscription changed_;
};

/// A tie of one kind of control to one kind of widget.
template <typename ControlKind, typename WidgetKind>
class TieOf : public Tie {
  public:
    using Control = ControlKind;
    using Widget = WidgetKind;

    TieOf(ControlKind& control, WidgetKind& widget, const Front& front)
        : Tie(control, front), control_(control), widget_(widget) {}

  protected:
    ControlKind& control() const { return control_; }
    WidgetKind& widget() const { return widget_; }

  private:
    ControlKind& control_;
    WidgetKind& widget_;
};

/// The tie, when both are of its kinds; nothing otherwise.
template <typename TieKind>
std::unique_ptr<Tie> tie(platform::Control& control, QWidget* widget, const Front& front) {
    auto* const ofKind = dynamic_cast<typename TieKind::Control*>(&control);
    auto* const shownBy = dynamic_cast<typename TieKind::Widget*>(widget);
    if (ofKind == nullptr || shownBy == nullptr) return nullptr;
    return std::make_unique<TieKind>(*ofKind, *shownBy, front);
}

/// What the operator presses, ticks or chooses: buttons, boxes, options, lists. Nothing for other kinds.
std::unique_ptr<Tie> tieChoice(platform::Control& control, QWidget* widget, const Front& front);
std::unique_ptr<Tie> tieMenuItem(platform::MenuItem& item, QAction& action, const Front& front);
/// What the operator reads or writes: labels, frames, text boxes, pictures, gauges. Nothing for other kinds.
std::unique_ptr<Tie> tieText(platform::Control& control, QWidget* widget, const Front& front);

}  // namespace vantrel::qt
