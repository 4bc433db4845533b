#include "qt/mnemonics.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QTabWidget>
#include <QVariant>
#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <vector>

namespace vantrel::qt {
namespace {

constexpr const char* kLetter = "mnemonic";      // the property that holds it
constexpr const char* kAltIsHeld = "altIsHeld";  // of the application

/// Something with a caption that can have a letter.
struct Item {
    QWidget* widget;
    QString caption;
    std::vector<QChar> letters;  // the ones it could have, the best first
};

QString captionOf(const QWidget& widget) {
    if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget)) return button->text();
    const auto* label = dynamic_cast<const QLabel*>(&widget);
    return label != nullptr && label->buddy() != nullptr ? label->text() : QString();
}

void setCaption(QWidget& widget, const QString& caption) {
    if (auto* button = dynamic_cast<QAbstractButton*>(&widget)) button->setText(caption);
    if (auto* label = dynamic_cast<QLabel*>(&widget)) label->setText(caption);
}

/// Beginnings of words come before letters inside them.
std::vector<QChar> lettersOf(const QString& caption) {
    std::vector<QChar> letters;
    for (const bool wanted : {true, false})
        for (qsizetype i = 0; i < caption.size(); ++i) {
            const bool begins = i == 0 || !caption.at(i - 1).isLetter();
            const QChar letter = caption.at(i).toLower();
            if (caption.at(i).isLetter() && begins == wanted &&
                std::ranges::find(letters, letter) == letters.end())
                letters.push_back(letter);
        }
    return letters;
}

bool isButton(const Item& item) { return dynamic_cast<const QAbstractButton*>(item.widget) != nullptr; }

/// The widgets of the window that lie on this page, or on none.
std::vector<Item> itemsOn(QWidget& window, const QTabWidget* tabs, const QWidget* page) {
    std::vector<Item> items;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        const QString caption = captionOf(*widget);
        const bool onAnyPage = tabs != nullptr && tabs->isAncestorOf(widget);
        if (page != nullptr ? !page->isAncestorOf(widget) : onAnyPage) continue;
        if (widget->property(kWantsNoLetter).toBool()) continue;
        if (auto letters = lettersOf(caption); !letters.empty())
            items.push_back({widget, caption, std::move(letters)});
    }
    // Fields may share a letter, which then goes from one to the next; buttons should not.
    std::stable_partition(items.begin(), items.end(), isButton);
    return items;
}

/// Who has which letter: as many items as possible get one of their own (augmenting paths, as in Kuhn's
/// assignment of marriages).
class Assignment {
  public:
    Assignment(const std::vector<Item>& items, const std::set<QChar>& taken) : items_(items), taken_(taken) {
        for (std::size_t item = 0; item < items.size(); ++item) {
            std::set<QChar> tried;
            place(item, tried);
        }
    }

    /// The item's own letter, or one that it shares with another field.
    QChar letterOf(std::size_t item) const {
        for (const auto& [letter, owner] : owners_)
            if (owner == item) return letter;
        for (const QChar letter : items_[item].letters)
            if (const auto owner = owners_.find(letter);
                owner != owners_.end() && !isButton(items_[owner->second]))
                return letter;
        return {};
    }

  private:
    bool place(std::size_t item, std::set<QChar>& tried) {
        for (const QChar letter : items_[item].letters) {
            if (taken_.contains(letter) || !tried.insert(letter).second) continue;
            const auto owner = owners_.find(letter);
            if (owner != owners_.end() && !place(owner->second, tried)) continue;
            owners_[letter] = item;
            return true;
        }
        return false;
    }

    const std::vector<Item>& items_;
    const std::set<QChar>& taken_;
    std::map<QChar, std::size_t> owners_;
};

/// Returns the letters that are taken now.
std::set<QChar> assignTo(const std::vector<Item>& items, const std::set<QChar>& taken) {
    const Assignment assignment(items, taken);
    std::set<QChar> takenNow = taken;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const QChar letter = assignment.letterOf(i);
        if (letter.isNull()) continue;
        takenNow.insert(letter);
        items[i].widget->setProperty(kLetter, QString(letter));
        setCaption(*items[i].widget, withMnemonic(*items[i].widget, items[i].caption));
    }
    return takenNow;
}

/// The buttons that choose first, then the others.
std::set<QChar> assign(std::vector<Item> items, const std::set<QChar>& taken) {
    const auto others = std::stable_partition(items.begin(), items.end(), [](const Item& item) {
        return item.widget->property(kChoosesLetterFirst).toBool();
    });
    return assignTo({others, items.end()}, assignTo({items.begin(), others}, taken));
}

/// Tells the application when Alt is pressed and released, and has every widget drawn anew.
class AltWatch : public QObject {
  public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        const bool pressed = event->type() == QEvent::KeyPress;
        const bool released = event->type() == QEvent::KeyRelease;
        const bool left = event->type() == QEvent::ApplicationStateChange;
        if (left || ((pressed || released) && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Alt))
            show(pressed);
        return QObject::eventFilter(watched, event);
    }

  private:
    static void show(bool held) {
        if (altIsHeld() == held) return;
        qApp->setProperty(kAltIsHeld, held);
        for (QWidget* widget : QApplication::allWidgets()) widget->update();
    }
};

}  // namespace

void assignMnemonics(QWidget& window) {
    std::set<QChar> taken;
    if (const auto* bar = window.findChild<QMenuBar*>())
        for (const QAction* menu : bar->actions())
            if (const auto mark = menu->text().indexOf('&'); mark >= 0)
                taken.insert(menu->text().at(mark + 1).toLower());
    const auto* tabs = window.findChild<QTabWidget*>();
    taken = assign(itemsOn(window, tabs, nullptr), taken);
    for (int page = 0; tabs != nullptr && page < tabs->count(); ++page)
        assign(itemsOn(window, tabs, tabs->widget(page)), taken);
}

QString withMnemonic(const QWidget& widget, const QString& caption) {
    const QString letter = widget.property(kLetter).toString();
    if (letter.isEmpty()) return caption;
    const auto letters = lettersOf(caption);
    if (std::ranges::find(letters, letter.at(0)) == letters.end()) return caption;
    // The place that the letters were looked for in, beginnings of words first.
    for (const bool wanted : {true, false})
        for (qsizetype i = 0; i < caption.size(); ++i) {
            const bool begins = i == 0 || !caption.at(i - 1).isLetter();
            if (begins == wanted && caption.at(i).toLower() == letter.at(0))
                return QString(caption).insert(i, '&');
        }
    return caption;
}

void watchAltKey(QObject& parent) { qApp->installEventFilter(new AltWatch(&parent)); }

bool altIsHeld() { return qApp->property(kAltIsHeld).toBool(); }

}  // namespace vantrel::qt
