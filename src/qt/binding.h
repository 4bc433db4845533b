// Ties a form's controls to the widgets of the same names.
#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "platform/form.h"
#include "qt/front.h"

class QWidget;

namespace vantrel::qt {

class Tie;

/// Widgets show what the controls hold; the operator's doing reaches the controls, clicks and choices by way
/// of the event loop, so that a procedure never runs inside the toolkit's own mouse and key handling.
/// A control without a widget (or, for menu items, an action) of its name, one of the wrong kind, or a named
/// widget without a control throw std::logic_error.
class Binding {
  public:
    Binding(platform::Form& form, QWidget& window, const Front& front);
    ~Binding();

  private:
    std::vector<std::unique_ptr<Tie>> ties_;
    platform::Subscription themeChanged_;
};

/// The caption as the toolkit's plain texts show it: a doubled ampersand is one, line ends are line feeds.
QString plainCaption(QString text);

/// Set to true on a push button whose caption breaks at blanks, for buttons that are tall and narrow.
inline constexpr const char* kBreaksCaption = "breaksCaption";
/// Set to true on a text of several lines whose newest line is to be in view.
inline constexpr const char* kFollowsEnd = "followsEnd";

}  // namespace vantrel::qt
