#include "qt/qt_event_loop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <chrono>

namespace vantrel::qt {
namespace {

/// The toolkit sends what was posted in batches. A wait that begins in the middle of one, in a handler, would
/// leave the rest lying until a handler posts anew: a window that was to be painted again stays as it is, for
/// seconds when the operator's hands are off the mouse.
void finishBatch() { QCoreApplication::sendPostedEvents(); }

}  // namespace

platform::Instant QtEventLoop::RunningClock::utc() const {
    return std::chrono::time_point_cast<platform::Milliseconds>(std::chrono::system_clock::now());
}

QtEventLoop::QtEventLoop(const Barrier& barrier) : barrier_(barrier) {}

QtEventLoop::~QtEventLoop() = default;

void QtEventLoop::post(std::function<void()> handler) {
    QMetaObject::invokeMethod(
        &receiver_, [this, handler = std::move(handler)] { barrier_.run(handler); }, Qt::QueuedConnection);
}

platform::TimerHandle QtEventLoop::every(platform::Milliseconds interval, std::function<void()> handler) {
    // The handler may let go of its own timer, which therefore isn't deleted on the spot.
    const std::shared_ptr<QTimer> timer(new QTimer, [](QTimer* gone) {
        gone->stop();
        gone->disconnect();
        gone->deleteLater();
    });
    QObject::connect(timer.get(), &QTimer::timeout, &receiver_,
                     [this, handler = std::move(handler)] { barrier_.run(handler); });
    timer->start(interval);
    return timer;
}

platform::TimerHandle QtEventLoop::whenReadable(int descriptor, std::function<void()> handler) {
    const std::shared_ptr<QSocketNotifier> notifier(new QSocketNotifier(descriptor, QSocketNotifier::Read),
                                                    [](QSocketNotifier* gone) {
                                                        gone->setEnabled(false);
                                                        gone->disconnect();
                                                        gone->deleteLater();
                                                    });
    QObject::connect(notifier.get(), &QSocketNotifier::activated, &receiver_,
                     [this, handler = std::move(handler)] { barrier_.run(handler); });
    return notifier;
}

void QtEventLoop::yield() {
    finishBatch();
    QCoreApplication::processEvents();
}

void QtEventLoop::sleep(platform::Milliseconds duration) {
    constexpr platform::Milliseconds kShort{10};
    const bool wasEnding = ending();
    bool over = false;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&over] { over = true; });
    timer.start(wasEnding ? std::min(duration, kShort) : duration);
    runUntil([&] { return over || ending() != wasEnding; });
}

void QtEventLoop::runUntil(const std::function<bool()>& done) {
    // exec() would return at once after the toolkit's quit, and a procedure that waits in a loop would spin.
    // One turn at a time blocks as it should.
    QEventLoop loop;
    for (;;) {
        // Not left to the turn, which may wait after it has sent what makes it done.
        finishBatch();
        if (done()) return;
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

}  // namespace vantrel::qt
