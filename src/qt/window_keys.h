// The keys that every window understands.
#pragma once

class QPushButton;
class QWidget;

namespace vantrel::qt {

/// Enter presses the button that has the keyboard, or else the one that answers the window (answerWithEnter).
void pressByEnter(QWidget& window);
/// What Enter presses from anywhere in the window where it means nothing else.
void answerWithEnter(QPushButton& button);

/// Esc and Ctrl+W close the window, as its title bar does.
void closeByKeys(QWidget& window);

}  // namespace vantrel::qt
