#include "qt/arrangement.h"

#include <algorithm>

namespace vantrel::qt {
namespace {

QRect cutFromBottom(QRect& room, int height) {
    const QRect cut(room.left(), room.bottom() + 1 - height, room.width(), height);
    room.setBottom(cut.top() - 1);
    return cut;
}

QRect cutFromRight(QRect& room, int width) {
    const QRect cut(room.right() + 1 - width, room.top(), width, room.height());
    room.setRight(cut.left() - 1);
    return cut;
}

QRect topOf(const QRect& room, const QSize& size) { return {room.topLeft(), size.boundedTo(room.size())}; }

/// For log and simulator, below an image that keeps most of its height.
QRect cutTray(QRect& room, const WindowSizes& sizes) {
    const int wanted =
        std::min(std::max(sizes.simulator.height(), sizes.log.height()), room.height() * 2 / 5);
    const int least = std::max(sizes.logLeast.height(), sizes.simulatorLeast.height());
    const int most = std::max(room.height() - sizes.imageLeast.height(), least);
    return cutFromBottom(room, std::clamp(wanted, std::min(least, most), most));
}

}  // namespace

Arrangement arranged(const QVector<QRect>& screens, const WindowSizes& sizes) {
    const QRect area = screens.front();
    const int beside = std::min(area.width() - sizes.imageLeast.width(), sizes.main.width());
    const int mainWidth = std::min(std::max(beside, sizes.mainLeast.width()), area.width());
    Arrangement result;
    QRect left(area.topLeft(), QSize(mainWidth, area.height()));
    QRect right = area.adjusted(mainWidth, 0, 0, 0);
    result.main = topOf(left, {mainWidth, sizes.main.height()});
    left.setTop(result.main.bottom() + 1);
    const bool logBelow = left.height() >= sizes.logLeast.height();
    const bool simulatorBeside =
        right.width() >= sizes.imageLeast.width() + sizes.simulator.width() || screens.size() > 1;
    if (screens.size() > 1) {
        result.image = screens[1];
        if (logBelow) {
            result.log = left;
            result.simulator = topOf(right, sizes.simulator);
        } else {
            result.log = cutTray(right, sizes);
            result.simulator = topOf(right, sizes.simulator);
        }
        return result;
    }
    if (simulatorBeside)
        result.simulator = topOf(cutFromRight(right, sizes.simulator.width()), sizes.simulator);
    if (logBelow) result.log = left;
    if (!logBelow || !simulatorBeside) {
        const QRect tray = cutTray(right, sizes);
        if (!logBelow) result.log = tray;
        if (!simulatorBeside) result.simulator = tray;
    }
    result.image = right;
    return result;
}

}  // namespace vantrel::qt
