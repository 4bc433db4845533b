// Files that are dropped on a window, to be solved.
#pragma once

#include "platform/form.h"
#include "qt/front.h"

class QWidget;

namespace vantrel::qt {

/// A file that is dropped on the window is solved in the "Solve a Picture" window, as if the operator had
/// named it there. The screen must outlive the window.
void solveDroppedPictures(QWidget& window, platform::Screen& screen, const Front& front);

}  // namespace vantrel::qt
