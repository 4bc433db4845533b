// What the windows ask of the desktop by means that each system has for itself.
#pragma once

#include <string>

namespace vantrel::qt {

/// Whether the desktop has a program that shows compiled help files.
bool hasHelpViewer();

/// Speaks, where something here can; returns at once. What is still being said is cut off.
void speakAloud(const std::string& words);

}  // namespace vantrel::qt
