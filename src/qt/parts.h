// The pieces that the windows are laid out with.
#pragma once

#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QString>
#include <initializer_list>

class QAction;
class QGroupBox;
class QHBoxLayout;
class QMenu;
class QPlainTextEdit;

namespace vantrel::qt {

/// Translates the windows' own texts: headings and labels that no control brings along. Captions, messages
/// and log lines are the program's words, the same in every language, so that notes, scripts and manuals
/// agree.
struct Text {
    Q_DECLARE_TR_FUNCTIONS(Text)
};

/// A line to type in, with a caret in the look's own colour. The toolkit's inverts what is below it, which is
/// white by night; the style leaves it out.
class LineField : public QLineEdit {
  protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A light with a caption: a rounded face in the label's own colours.
class IndicatorLabel : public QLabel {
  public:
    IndicatorLabel();

  protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A value behind glass: figures of the same width, right-aligned.
class Readout : public QLabel {
  public:
    explicit Readout(int characters);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

/// Scrolls what is on it where there is no room for it, and keeps whatever has the keys in view.
class ScrollPage : public QScrollArea {
  public:
    explicit ScrollPage(QWidget* content);
    QSize sizeHint() const override { return widget()->sizeHint(); }

  protected:
    void hideEvent(QHideEvent* event) override;

  private:
    void bringIntoView(const QWidget& focus);

    bool hadFocus_ = false;  // since the window opened
};

/// Scrolls upwards and downwards only: it stands beside others and is always as wide as its content.
class ScrollColumn : public ScrollPage {
  public:
    explicit ScrollColumn(QWidget* content);
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;
};

/// A list that a turn of the wheel passes by, unless it has the keys: the page below scrolls.
class ListField : public QComboBox {
  public:
    ListField() { setFocusPolicy(Qt::StrongFocus); }

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// A widget that goes by the control's name.
template <typename Widget, typename... Args>
Widget* named(const char* name, Args&&... args) {
    auto* const widget = new Widget(std::forward<Args>(args)...);
    widget->setObjectName(name);
    return widget;
}

/// A text field as wide as so many figures.
LineField* field(const char* name, int characters);

/// A list as wide and high as such a field, or wider where its longest entry asks for it.
QComboBox* listField(const char* name, int characters);

/// A push button.
QPushButton* button(const char* name);
/// A push button for gloved hands.
QPushButton* bigButton(const char* name);

QAction* menuItem(QMenu& menu, const char* name, bool checkable = false);

/// Keeps the widget's room when it is hidden, so that its neighbours stay where they are.
void keepRoom(QWidget& widget);

/// The widget's font, scaled.
void scaleFont(QWidget& widget, double factor, bool bold = false);

/// Things side by side; with a stretch behind them they keep to the left.
QHBoxLayout* row(std::initializer_list<QWidget*> widgets, bool stretchBehind = false);

/// A group around a layout.
QGroupBox* group(const QString& title, QLayout* content);

/// A label that belongs to the field.
QLabel* labelOf(QWidget& field, const QString& text);

/// Rows of label, field and unit with their edges in line.
class FieldGrid : public QGridLayout {
  public:
    FieldGrid();
    void addField(const QString& label, QWidget* field, const QString& unit = {});
    void addField(const QString& label, QWidget* field, QWidget* beside);
    /// Spans the row.
    void addRow(QWidget* widget);
    void addRow(QLayout* row);
};

}  // namespace vantrel::qt
