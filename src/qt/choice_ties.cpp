// Ties of what the operator presses, ticks or chooses.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>
#include <utility>
#include <vector>

#include "qt/binding.h"
#include "qt/mnemonics.h"
#include "qt/tie.h"
#include "qt/translation.h"

namespace vantrel::qt {

namespace color = platform::color;

namespace {

class ButtonTie : public TieOf<platform::Button, QPushButton> {
  public:
    ButtonTie(platform::Button& button, QPushButton& widget, const Front& front)
        : TieOf(button, widget, front) {
        connect(&widget, &QPushButton::clicked, this, [this] { post([this] { control().click(); }); });
    }
    void show() override {
        keepFocusToItself();
        showCommon(widget());
        showColors(widget(), QPalette::Button, color::kButtonFace, QPalette::ButtonText, color::kButtonText);
        QString caption = inWords(control().captionWords());
        if (widget().property(kBreaksCaption).toBool()) caption.replace(' ', '\n');
        widget().setText(withMnemonic(widget(), caption));
    }

  private:
    /// A button that is disabled gives the keyboard to nobody, and takes it back afterwards: no field gets
    /// keys that were not meant for it.
    void keepFocusToItself() {
        if (!control().enabled() && widget().hasFocus()) {
            hadFocus_ = true;
            widget().clearFocus();
        } else if (control().enabled() && std::exchange(hadFocus_, false) &&
                   widget().window()->focusWidget() == nullptr) {
            widget().setEnabled(true);
            widget().setFocus();
        }
    }

    bool hadFocus_ = false;
};

class MenuItemTie : public TieOf<platform::MenuItem, QAction> {
  public:
    MenuItemTie(platform::MenuItem& item, QAction& action, const Front& front) : TieOf(item, action, front) {
        connect(&action, &QAction::triggered, this, [this] {
            show();  // the check mark is the program's to set
            post([this] { control().click(); });
        });
    }
    void show() override {
        widget().setText(QString::fromStdString(control().caption()));
        widget().setEnabled(control().enabled());
        widget().setVisible(control().visible());
        widget().setChecked(control().checked());
    }
};

class CheckBoxTie : public TieOf<platform::CheckBox, QCheckBox> {
  public:
    CheckBoxTie(platform::CheckBox& box, QCheckBox& widget, const Front& front) : TieOf(box, widget, front) {
        connect(&widget, &QCheckBox::clicked, this, [this](bool checked) {
            post([this, checked] {
                control().check(checked ? 1 : 0);
                show();
            });
        });
    }
    void show() override {
        showCommon(widget());
        widget().setText(withMnemonic(widget(), inWords(control().captionWords())));
        widget().setChecked(control().ticked());
    }
};

class OptionTie : public TieOf<platform::OptionButton, QRadioButton> {
  public:
    OptionTie(platform::OptionButton& option, QRadioButton& widget, const Front& front)
        : TieOf(option, widget, front) {
        widget.setAutoExclusive(false);  // the form keeps its options apart
        connect(&widget, &QRadioButton::clicked, this, [this] {
            post([this] {
                control().click();
                show();
            });
        });
    }
    void show() override {
        showCommon(widget());
        widget().setText(withMnemonic(widget(), inWords(control().captionWords())));
        widget().setChecked(control().selected());
    }
};

class ComboTie : public TieOf<platform::ComboBox, QComboBox> {
  public:
    ComboTie(platform::ComboBox& box, QComboBox& widget, const Front& front) : TieOf(box, widget, front) {
        connect(&widget, &QComboBox::activated, this, [this](int index) {
            if (index < 0 || static_cast<std::size_t>(index) >= items_.size()) return;
            post([this, text = items_[static_cast<std::size_t>(index)].text.english()] {
                control().choose(text);
                show();
            });
        });
    }
    void show() override {
        showCommon(widget());
        showColors(widget(), QPalette::Button, color::kWindowBackground, QPalette::ButtonText,
                   color::kWindowText);
        if (items_ != control().items()) {
            items_ = control().items();
            widget().clear();
            for (const auto& item : items_) widget().addItem(inWords(item.text));
        }
        const auto chosen = std::ranges::find(
            items_, control().text(), [](const auto& item) -> const auto& { return item.text.english(); });
        widget().setCurrentIndex(chosen == items_.end() ? -1 : static_cast<int>(chosen - items_.begin()));
        widget().setPlaceholderText(inWords(control().textWords()));  // shown when it isn't in the list
    }

  private:
    std::vector<platform::ComboBox::Item> items_;
};

}  // namespace

std::unique_ptr<Tie> tieChoice(platform::Control& control, QWidget* widget, const Front& front) {
    for (const auto make : {tie<ButtonTie>, tie<CheckBoxTie>, tie<OptionTie>, tie<ComboTie>})
        if (auto made = make(control, widget, front)) return made;
    return nullptr;
}

std::unique_ptr<Tie> tieMenuItem(platform::MenuItem& item, QAction& action, const Front& front) {
    return std::make_unique<MenuItemTie>(item, action, front);
}

}  // namespace vantrel::qt
