// What the windows ask of the desktop by means that each system has for itself.
#pragma once

#include <string>

class QWidget;

namespace vantrel::qt {

class Look;

/// Whether the desktop has a program that shows compiled help files.
bool hasHelpViewer();

/// Speaks, where something here can; returns at once. What is still being said is cut off.
void speakAloud(const std::string& words);

/// Colours a window's title bar to match the look, where that is the program's to do; by day the system's own
/// colours stay. The window must be one of the system's already.
void colorTitleBar(QWidget& window, const Look& look);

}  // namespace vantrel::qt
