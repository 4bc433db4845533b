// Ties of what the operator reads or writes.
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextDocument>
#include <QTextOption>
#include <string>

#include "qt/binding.h"
#include "qt/gauge_bar.h"
#include "qt/picture_widget.h"
#include "qt/plate_view.h"
#include "qt/tie.h"
#include "qt/translation.h"

namespace vantrel::qt {

namespace color = platform::color;

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

class LabelTie : public TieOf<platform::Label, QLabel> {
  public:
    LabelTie(platform::Label& label, QLabel& widget, const Front& front) : TieOf(label, widget, front) {
        widget.setTextFormat(Qt::PlainText);
    }
    void show() override {
        showCommon(widget());
        showColors(widget(), QPalette::Window, color::kButtonFace, QPalette::WindowText, color::kButtonText);
        widget().setText(plainCaption(inWords(control().captionWords())));
    }
};

class FrameTie : public TieOf<platform::Frame, QGroupBox> {
  public:
    using TieOf::TieOf;
    void show() override {
        showCommon(widget());
        widget().setTitle(inWords(control().captionWords()));
    }
};

/// A text box that the operator can type into.
class LineTie : public TieOf<platform::TextBox, QLineEdit> {
  public:
    LineTie(platform::TextBox& box, QLineEdit& widget, const Front& front) : TieOf(box, widget, front) {
        connect(&widget, &QLineEdit::textEdited, this, [this] { now([this] { typed(); }); });
        connect(&widget, &QLineEdit::editingFinished, this, [this] { post([this] { control().leave(); }); });
        widget.installEventFilter(this);
    }
    void show() override {
        showCommon(widget());
        showColors(widget(), QPalette::Base, color::kWindowBackground, QPalette::Text, color::kWindowText);
        widget().setReadOnly(control().readOnly());
        widget().setFocusPolicy(control().readOnly() ? Qt::ClickFocus : Qt::StrongFocus);
        if (control().alignment() != alignment_) {
            alignment_ = control().alignment();
            widget().setAlignment(horizontal(alignment_) | Qt::AlignVCenter);
        }
        const QString text = QString::fromStdString(control().text());
        if (text == widget().text()) return;
        widget().setText(text);
        if (typing_)
            widget().selectAll();  // the next key replaces what the program put there
        else
            widget().setCursorPosition(0);  // of a long text, the beginning is in view
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
        if (!control().keyFilter || control().readOnly() || text.size() != 1) return false;
        const int code = text.at(0).unicode();
        if (code < kFirstPrintable || code == kDelete) return false;
        const int accepted = control().filtered(code);
        if (accepted == code) return false;
        if (accepted != 0) {
            widget().insert(QString(QChar(accepted)));
            typed();
        }
        return true;
    }
    void typed() {
        typing_ = true;
        control().type(widget().text().toStdString());
        show();  // the box may have refused or changed the text
        typing_ = false;
    }

    platform::Alignment alignment_ = platform::Alignment::kLeft;
    bool typing_ = false;
};

/// A text box of several lines, for reading only.
class PlainTextTie : public TieOf<platform::TextBox, QPlainTextEdit> {
  public:
    PlainTextTie(platform::TextBox& box, QPlainTextEdit& widget, const Front& front)
        : TieOf(box, widget, front) {
        widget.setReadOnly(true);
    }
    void show() override {
        showCommon(widget());
        showColors(widget(), QPalette::Base, color::kWindowBackground, QPalette::Text, color::kWindowText);
        QTextOption option = widget().document()->defaultTextOption();
        option.setAlignment(horizontal(control().alignment()));
        widget().document()->setDefaultTextOption(option);
        if (text_ == control().text()) return;
        text_ = control().text();
        widget().setPlainText(lineFeedsOnly(text_));
        if (widget().property(kFollowsEnd).toBool()) {
            widget().moveCursor(QTextCursor::End);
            widget().verticalScrollBar()->setValue(widget().verticalScrollBar()->maximum());
        }
    }

  private:
    std::string text_;
};

/// A text box that only shows a value.
class ReadoutTie : public TieOf<platform::TextBox, QLabel> {
  public:
    ReadoutTie(platform::TextBox& box, QLabel& widget, const Front& front) : TieOf(box, widget, front) {
        widget.setTextFormat(Qt::PlainText);
    }
    void show() override {
        showCommon(widget());
        showColors(widget(), QPalette::Base, color::kWindowBackground, QPalette::WindowText,
                   color::kWindowText);
        widget().setText(lineFeedsOnly(control().text()));
    }
};

class PictureTie : public TieOf<platform::PictureBox, PictureWidget> {
  public:
    using TieOf::TieOf;
    void show() override {
        showCommon(widget());
        widget().setDrawing(control().drawing());
    }
};

class PlateTie : public TieOf<platform::PictureBox, PlateView> {
  public:
    using TieOf::TieOf;
    void show() override {
        showCommon(widget());
        widget().setDrawing(control().drawing());
    }
};

class GaugeTie : public TieOf<platform::Gauge, GaugeBar> {
  public:
    using TieOf::TieOf;
    void show() override {
        showCommon(widget());
        widget().setFraction(control().fraction());
    }
};

}  // namespace

std::unique_ptr<Tie> tieText(platform::Control& control, QWidget* widget, const Front& front) {
    for (const auto make : {tie<LabelTie>, tie<FrameTie>, tie<LineTie>, tie<PlainTextTie>, tie<ReadoutTie>,
                            tie<PictureTie>, tie<PlateTie>, tie<GaugeTie>})
        if (auto made = make(control, widget, front)) return made;
    return nullptr;
}

}  // namespace vantrel::qt
