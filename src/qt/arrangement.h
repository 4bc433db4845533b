// Where the windows of a night stand so that none covers what has to be watched.
#pragma once

#include <QRect>
#include <QSize>
#include <QVector>

namespace vantrel::qt {

/// Sizes of windows, their frames included.
struct WindowSizes {
    QSize main, mainLeast;
    QSize imageLeast;
    QSize log, logLeast;
    QSize simulator, simulatorLeast;
};

/// Places of windows, their frames included.
struct Arrangement {
    QRect main, image, log, simulator;
};

/// The main window at the left; the image beside it, or on a second screen; the log below one of them; the
/// simulator where room is left. Where the screen has no room for both, log and simulator lie above each
/// other, but never on the main window or the image. Work areas of the screens, the main one first; at least
/// one.
Arrangement arranged(const QVector<QRect>& screens, const WindowSizes& sizes);

}  // namespace vantrel::qt
