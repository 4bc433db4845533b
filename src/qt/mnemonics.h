// Letters that reach a control with Alt held down.
#pragma once

#include <QString>

class QObject;
class QWidget;

namespace vantrel::qt {

/// Set to true on buttons that are pressed in the dark: theirs is the letter that comes to mind.
inline constexpr const char* kChoosesLetterFirst = "choosesLetterFirst";
/// Set to true on buttons that do without a letter.
inline constexpr const char* kWantsNoLetter = "wantsNoLetter";

/// Gives every other button, option, tick box and labelled field of the window a letter out of its caption:
/// one of its own as far as the letters go, and on each tab as if the others weren't there. Captions must be
/// set.
void assignMnemonics(QWidget& window);

/// The caption with the mark before the letter that the widget was given; as it is where it has none.
QString withMnemonic(const QWidget& widget, const QString& caption);

/// From now on, as long as `parent` lives, the application notices when Alt is held down: the letters show
/// only then. The application must exist.
void watchAltKey(QObject& parent);
bool altIsHeld();

}  // namespace vantrel::qt
