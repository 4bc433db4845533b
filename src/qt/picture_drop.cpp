#include "qt/picture_drop.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace vantrel::qt {
namespace {

/// The first file of this machine; empty when there is none.
QString fileIn(const QMimeData& dropped) {
    for (const QUrl& url : dropped.urls())
        if (url.isLocalFile()) return url.toLocalFile();
    return {};
}

class PictureDrop : public QObject {
  public:
    PictureDrop(QWidget& window, platform::Screen& screen, const Front& front)
        : QObject(&window), screen_(screen), front_(front) {
        window.setAcceptDrops(true);
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop) return false;
        auto& drag = static_cast<QDropEvent&>(*event);
        const QString file = fileIn(*drag.mimeData());
        if (file.isEmpty()) return false;
        drag.acceptProposedAction();
        if (event->type() == QEvent::Drop) solve(file.toStdString());
        return true;
    }

  private:
    void solve(const std::string& file) {
        front_.loop.post([&screen = screen_, file] {
            if (platform::Form* const welcome = screen.find("frmWelcome")) welcome->closeByOperator();
            platform::Form* const form = screen.find("frmSolvePicture");
            if (form == nullptr) return;
            form->show();
            dynamic_cast<platform::TextBox&>(*form->find("txtFile")).type(file);
            dynamic_cast<platform::Button&>(*form->find("cmdSolve")).click();
        });
    }

    platform::Screen& screen_;
    Front front_;
};

}  // namespace

void solveDroppedPictures(QWidget& window, platform::Screen& screen, const Front& front) {
    new PictureDrop(window, screen, front);
}

}  // namespace vantrel::qt
