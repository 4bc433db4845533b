#include "qt/window_keys.h"

#include <QKeyEvent>
#include <QPushButton>
#include <QShortcut>
#include <QVariant>

namespace vantrel::qt {
namespace {

constexpr const char* kAnswers = "answersWindow";

QPushButton* buttonForEnter(const QWidget& window) {
    if (auto* const focused = qobject_cast<QPushButton*>(window.focusWidget())) return focused;
    for (QPushButton* button : window.findChildren<QPushButton*>())
        if (button->property(kAnswers).toBool()) return button;
    return nullptr;
}

/// Is handed the keys that no widget of the window wanted.
class EnterKey : public QObject {
  public:
    explicit EnterKey(QWidget& window) : QObject(&window), window_(window) {
        window.installEventFilter(this);
    }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const auto& key = *static_cast<QKeyEvent*>(event);
        if ((key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) || key.isAutoRepeat()) return false;
        QPushButton* const button = buttonForEnter(window_);
        if (button != nullptr) button->click();
        return button != nullptr;
    }

  private:
    QWidget& window_;
};

}  // namespace

void pressByEnter(QWidget& window) { new EnterKey(window); }

void answerWithEnter(QPushButton& button) { button.setProperty(kAnswers, true); }

void closeByKeys(QWidget& window) {
    for (const QKeySequence& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        QObject::connect(new QShortcut(keys, &window), &QShortcut::activated, &window, &QWidget::close);
}

}  // namespace vantrel::qt
