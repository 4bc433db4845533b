#include "qt/binding.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextDocument>
#include <QTextOption>
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "qt/mnemonics.h"
#include "qt/picture_widget.h"
#include "qt/translation.h"

namespace vantrel::qt {

namespace color = platform::color;

QString plainCaption(QString text) {
    text.replace("\r\n", "\n");
    constexpr QChar kPlaceholder(0xFFFF);
    text.replace("&&", kPlaceholder).remove('&').replace(kPlaceholder, '&');
    return text;
}

namespace {

QString lineFeedsOnly(const std::string& text) { return QString::fromStdString(text).replace("\r\n", "\n"); }

Qt::Alignment horizontal(platform::Alignment alignment) {
    switch (alignment) {
        case platform::Alignment::kRight:
            return Qt::AlignRight;
        case platform::Alignment::kCentre:
            return Qt::AlignHCenter;
        default:
            return Qt::AlignLeft;
    }
}

void setRole(QPalette& palette, QPalette::ColorRole role, const QColor& color) {
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, role, color);
}

}  // namespace

/// One control and its widget or action.
class Tie : public QObject {
  public:
    Tie(platform::Control& control, const Front& front) : front_(front), control_(control) {
        changed_ = control.changed.subscribe([this] { show(); });
    }

    virtual void show() = 0;

  protected:
    platform::Control& control() const { return control_; }
    const Theme& theme() const { return front_.theme; }

    /// A caption in the operator's language.
    QString words(const std::string& text) const { return inWords(control_.form().name(), text); }

    /// The operator did something that may start a procedure.
    void post(std::function<void()> action) {
        front_.loop.post([action = std::move(action)] { action(); });
    }
    /// The operator did something small that has to take effect before the next key.
    template <typename Action>
    void now(Action&& action) {
        front_.barrier.run(action);
    }

    void showCommon(QWidget& widget) const {
        widget.setEnabled(control_.enabled());
        widget.setVisible(control_.visible());
        widget.setToolTip(words(control_.toolTip()).trimmed());
    }

    /// Colours other than a control's usual ones are laid over the look's palette.
    void showColors(QWidget& widget, QPalette::ColorRole back, platform::Color usualBack,
                    QPalette::ColorRole fore, platform::Color usualFore) const {
        QPalette palette;
        const bool ownBack = control_.backColor() != usualBack;
        if (ownBack) setRole(palette, back, theme().surface(control_.backColor()));
        if (control_.foreColor() != usualFore)
            setRole(palette, fore, theme().ink(control_.foreColor()));
        else if (ownBack)
            setRole(palette, fore, theme().ink(color::kBlack));
        widget.setPalette(palette);
    }

  private:
    const Front& front_;
    platform::Control& control_;
    platform::Subscription changed_;
};

namespace {

class LabelTie : public Tie {
  public:
    LabelTie(platform::Label& label, QLabel& widget, const Front& front)
        : Tie(label, front), label_(label), widget_(widget) {
        widget_.setTextFormat(Qt::PlainText);
    }
    void show() override {
        showCommon(widget_);
        showColors(widget_, QPalette::Window, color::kButtonFace, QPalette::WindowText, color::kButtonText);
        widget_.setText(plainCaption(words(label_.caption())));
    }

  private:
    platform::Label& label_;
    QLabel& widget_;
};

class FrameTie : public Tie {
  public:
    FrameTie(platform::Frame& frame, QGroupBox& widget, const Front& front)
        : Tie(frame, front), frame_(frame), widget_(widget) {}
    void show() override {
        showCommon(widget_);
        widget_.setTitle(words(frame_.caption()));
    }

  private:
    platform::Frame& frame_;
    QGroupBox& widget_;
};

class ButtonTie : public Tie {
  public:
    ButtonTie(platform::Button& button, QPushButton& widget, const Front& front)
        : Tie(button, front), button_(button), widget_(widget) {
        connect(&widget_, &QPushButton::clicked, this, [this] { post([this] { button_.click(); }); });
    }
    void show() override {
        keepFocusToItself();
        showCommon(widget_);
        showColors(widget_, QPalette::Button, color::kButtonFace, QPalette::ButtonText, color::kButtonText);
        QString caption = words(button_.caption());
        if (widget_.property(kBreaksCaption).toBool()) caption.replace(' ', '\n');
        widget_.setText(withMnemonic(widget_, caption));
    }

  private:
    /// A button that is disabled gives the keyboard to nobody, and takes it back afterwards: no field gets
    /// keys that were not meant for it.
    void keepFocusToItself() {
        if (!button_.enabled() && widget_.hasFocus()) {
            hadFocus_ = true;
            widget_.clearFocus();
        } else if (button_.enabled() && std::exchange(hadFocus_, false) &&
                   widget_.window()->focusWidget() == nullptr) {
            widget_.setEnabled(true);
            widget_.setFocus();
        }
    }

    platform::Button& button_;
    QPushButton& widget_;
    bool hadFocus_ = false;
};

class MenuItemTie : public Tie {
  public:
    MenuItemTie(platform::MenuItem& item, QAction& action, const Front& front)
        : Tie(item, front), item_(item), action_(action) {
        connect(&action_, &QAction::triggered, this, [this] {
            show();  // the check mark is the program's to set
            post([this] { item_.click(); });
        });
    }
    void show() override {
        action_.setText(QString::fromStdString(item_.caption()));
        action_.setEnabled(item_.enabled());
        action_.setVisible(item_.visible());
        action_.setChecked(item_.checked());
    }

  private:
    platform::MenuItem& item_;
    QAction& action_;
};

class CheckBoxTie : public Tie {
  public:
    CheckBoxTie(platform::CheckBox& box, QCheckBox& widget, const Front& front)
        : Tie(box, front), box_(box), widget_(widget) {
        connect(&widget_, &QCheckBox::clicked, this, [this](bool checked) {
            post([this, checked] {
                box_.check(checked ? 1 : 0);
                show();
            });
        });
    }
    void show() override {
        showCommon(widget_);
        widget_.setText(withMnemonic(widget_, words(box_.caption())));
        widget_.setChecked(box_.ticked());
    }

  private:
    platform::CheckBox& box_;
    QCheckBox& widget_;
};

class OptionTie : public Tie {
  public:
    OptionTie(platform::OptionButton& option, QRadioButton& widget, const Front& front)
        : Tie(option, front), option_(option), widget_(widget) {
        widget_.setAutoExclusive(false);  // the form keeps its options apart
        connect(&widget_, &QRadioButton::clicked, this, [this] {
            post([this] {
                option_.click();
                show();
            });
        });
    }
    void show() override {
        showCommon(widget_);
        widget_.setText(withMnemonic(widget_, words(option_.caption())));
        widget_.setChecked(option_.selected());
    }

  private:
    platform::OptionButton& option_;
    QRadioButton& widget_;
};

/// A text box that the operator can type into.
class LineTie : public Tie {
  public:
    LineTie(platform::TextBox& box, QLineEdit& widget, const Front& front)
        : Tie(box, front), box_(box), widget_(widget) {
        connect(&widget_, &QLineEdit::textEdited, this, [this] { now([this] { typed(); }); });
        connect(&widget_, &QLineEdit::editingFinished, this, [this] { post([this] { box_.leave(); }); });
        widget_.installEventFilter(this);
    }
    void show() override {
        showCommon(widget_);
        showColors(widget_, QPalette::Base, color::kWindowBackground, QPalette::Text, color::kWindowText);
        widget_.setReadOnly(box_.readOnly());
        widget_.setFocusPolicy(box_.readOnly() ? Qt::ClickFocus : Qt::StrongFocus);
        if (box_.alignment() != alignment_) {
            alignment_ = box_.alignment();
            widget_.setAlignment(horizontal(alignment_) | Qt::AlignVCenter);
        }
        const QString text = QString::fromStdString(box_.text());
        if (text == widget_.text()) return;
        widget_.setText(text);
        if (typing_)
            widget_.selectAll();  // the next key replaces what the program put there
        else
            widget_.setCursorPosition(0);  // of a long text, the beginning is in view
    }
    /// Keys go through the box's filter, which may change or discard them.
    bool eventFilter(QObject* watched, QEvent* event) override {
        bool taken = false;
        if (event->type() == QEvent::KeyPress)
            now([&] { taken = filterKey(*static_cast<QKeyEvent*>(event)); });
        return taken || Tie::eventFilter(watched, event);
    }

  private:
    bool filterKey(const QKeyEvent& event) {
        const QString text = event.text();
        constexpr int kFirstPrintable = 32;
        constexpr int kDelete = 127;
        if (!box_.keyFilter || box_.readOnly() || text.size() != 1) return false;
        const int code = text.at(0).unicode();
        if (code < kFirstPrintable || code == kDelete) return false;
        const int accepted = box_.filtered(code);
        if (accepted == code) return false;
        if (accepted != 0) {
            widget_.insert(QString(QChar(accepted)));
            typed();
        }
        return true;
    }
    void typed() {
        typing_ = true;
        box_.type(widget_.text().toStdString());
        show();  // the box may have refused or changed the text
        typing_ = false;
    }

    platform::TextBox& box_;
    QLineEdit& widget_;
    platform::Alignment alignment_ = platform::Alignment::kLeft;
    bool typing_ = false;
};

/// A text box of several lines, for reading only.
class PlainTextTie : public Tie {
  public:
    PlainTextTie(platform::TextBox& box, QPlainTextEdit& widget, const Front& front)
        : Tie(box, front), box_(box), widget_(widget) {
        widget_.setReadOnly(true);
    }
    void show() override {
        showCommon(widget_);
        showColors(widget_, QPalette::Base, color::kWindowBackground, QPalette::Text, color::kWindowText);
        QTextOption option = widget_.document()->defaultTextOption();
        option.setAlignment(horizontal(box_.alignment()));
        widget_.document()->setDefaultTextOption(option);
        if (text_ == box_.text()) return;
        text_ = box_.text();
        widget_.setPlainText(lineFeedsOnly(text_));
        if (widget_.property(kFollowsEnd).toBool()) {
            widget_.moveCursor(QTextCursor::End);
            widget_.verticalScrollBar()->setValue(widget_.verticalScrollBar()->maximum());
        }
    }

  private:
    platform::TextBox& box_;
    QPlainTextEdit& widget_;
    std::string text_;
};

/// A text box that only shows a value.
class ReadoutTie : public Tie {
  public:
    ReadoutTie(platform::TextBox& box, QLabel& widget, const Front& front)
        : Tie(box, front), box_(box), widget_(widget) {
        widget_.setTextFormat(Qt::PlainText);
    }
    void show() override {
        showCommon(widget_);
        showColors(widget_, QPalette::Base, color::kWindowBackground, QPalette::WindowText,
                   color::kWindowText);
        widget_.setText(lineFeedsOnly(box_.text()));
    }

  private:
    platform::TextBox& box_;
    QLabel& widget_;
};

class ComboTie : public Tie {
  public:
    ComboTie(platform::ComboBox& box, QComboBox& widget, const Front& front)
        : Tie(box, front), box_(box), widget_(widget) {
        connect(&widget_, &QComboBox::activated, this, [this](int index) {
            if (index < 0 || static_cast<std::size_t>(index) >= items_.size()) return;
            post([this, text = items_[static_cast<std::size_t>(index)].text] {
                box_.choose(text);
                show();
            });
        });
    }
    void show() override {
        showCommon(widget_);
        showColors(widget_, QPalette::Button, color::kWindowBackground, QPalette::ButtonText,
                   color::kWindowText);
        if (items_ != box_.items()) {
            items_ = box_.items();
            widget_.clear();
            for (const auto& item : items_) widget_.addItem(words(item.text));
        }
        const auto chosen = std::ranges::find(items_, box_.text(), &platform::ComboBox::Item::text);
        widget_.setCurrentIndex(chosen == items_.end() ? -1 : static_cast<int>(chosen - items_.begin()));
        widget_.setPlaceholderText(words(box_.text()));  // shown when it isn't in the list
    }

  private:
    platform::ComboBox& box_;
    QComboBox& widget_;
    std::vector<platform::ComboBox::Item> items_;
};

class PictureTie : public Tie {
  public:
    PictureTie(platform::Picture& picture, PictureWidget& widget, const Front& front)
        : Tie(picture, front), picture_(picture), widget_(widget) {}
    void show() override {
        showCommon(widget_);
        widget_.setDrawing(picture_.drawing());
    }

  private:
    platform::Picture& picture_;
    PictureWidget& widget_;
};

[[noreturn]] void fail(const platform::Form& form, const std::string& name, const std::string& what) {
    throw std::logic_error(form.name() + "." + name + ": " + what);
}

/// The widget of a control and the tie between them, for one kind of each.
template <typename TieKind, typename ControlKind, typename WidgetKind>
std::unique_ptr<Tie> tie(platform::Control& control, QWidget* widget, const Front& front) {
    auto* const ofKind = dynamic_cast<ControlKind*>(&control);
    auto* const shownBy = dynamic_cast<WidgetKind*>(widget);
    if (ofKind == nullptr || shownBy == nullptr) return nullptr;
    return std::make_unique<TieKind>(*ofKind, *shownBy, front);
}

std::unique_ptr<Tie> tieFor(platform::Control& control, QWidget& window, const Front& front) {
    const QString name = QString::fromStdString(control.name());
    if (auto* const item = dynamic_cast<platform::MenuItem*>(&control)) {
        auto* const action = window.findChild<QAction*>(name);
        if (action == nullptr) fail(control.form(), control.name(), "the window has no such action");
        return std::make_unique<MenuItemTie>(*item, *action, front);
    }
    auto* const widget = window.findChild<QWidget*>(name);
    if (widget == nullptr) fail(control.form(), control.name(), "the window has no such widget");
    using Maker = std::unique_ptr<Tie> (*)(platform::Control&, QWidget*, const Front&);
    constexpr Maker kMakers[] = {tie<LabelTie, platform::Label, QLabel>,
                                 tie<FrameTie, platform::Frame, QGroupBox>,
                                 tie<ButtonTie, platform::Button, QPushButton>,
                                 tie<CheckBoxTie, platform::CheckBox, QCheckBox>,
                                 tie<OptionTie, platform::OptionButton, QRadioButton>,
                                 tie<LineTie, platform::TextBox, QLineEdit>,
                                 tie<PlainTextTie, platform::TextBox, QPlainTextEdit>,
                                 tie<ReadoutTie, platform::TextBox, QLabel>,
                                 tie<ComboTie, platform::ComboBox, QComboBox>,
                                 tie<PictureTie, platform::Picture, PictureWidget>};
    for (const Maker make : kMakers)
        if (auto made = make(control, widget, front)) return made;
    fail(control.form(), control.name(), "the widget is of another kind");
}

/// Whether the object is of a kind that shows a control. The toolkit names some of its own inner widgets.
bool isBindable(const QObject& object) {
    if (object.objectName().startsWith("qt_")) return false;
    const auto isA = [&object](auto* kind) { return dynamic_cast<decltype(kind)>(&object) != nullptr; };
    return isA(static_cast<const QLabel*>(nullptr)) || isA(static_cast<const QPushButton*>(nullptr)) ||
           isA(static_cast<const QCheckBox*>(nullptr)) || isA(static_cast<const QRadioButton*>(nullptr)) ||
           isA(static_cast<const QLineEdit*>(nullptr)) || isA(static_cast<const QPlainTextEdit*>(nullptr)) ||
           isA(static_cast<const QComboBox*>(nullptr)) || isA(static_cast<const QGroupBox*>(nullptr)) ||
           isA(static_cast<const PictureWidget*>(nullptr)) || isA(static_cast<const QAction*>(nullptr));
}

void checkNames(const platform::Form& form, const QWidget& window) {
    for (const QObject* object : window.findChildren<QObject*>()) {
        const QString name = object->objectName();
        if (!name.isEmpty() && isBindable(*object) && form.find(name.toStdString()) == nullptr)
            fail(form, name.toStdString(), "the form has no such control");
    }
}

}  // namespace

Binding::Binding(platform::Form& form, QWidget& window, const Front& front) {
    checkNames(form, window);
    for (platform::Control* control : form.controls()) ties_.push_back(tieFor(*control, window, front));
    const auto showAll = [this] {
        for (const auto& tie : ties_) tie->show();
    };
    showAll();
    themeChanged_ = front.theme.changed.subscribe(showAll);
}

Binding::~Binding() = default;

}  // namespace vantrel::qt
