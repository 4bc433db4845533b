#include "qt/parts.h"

#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QResizeEvent>
#include <QScrollBar>
#include <utility>

#include "qt/mnemonics.h"

namespace vantrel::qt {
namespace {

enum Column { kLabel, kField, kUnit, kRest, kColumns };

constexpr int kFieldEdges = 26;  // frame and inner margins of a field

int fieldHeight(const QWidget& widget) { return widget.fontMetrics().height() + 12; }

int figureWidth(const QWidget& widget) { return widget.fontMetrics().horizontalAdvance('0'); }

}  // namespace

void LineField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (!hasFocus() || isReadOnly()) return;
    constexpr int kWidth = 2;
    const QRect room = cursorRect();
    QPainter(this).fillRect(room.center().x(), room.top() + 1, kWidth, room.height() - 2,
                            palette().color(QPalette::Highlight));
}

IndicatorLabel::IndicatorLabel() {
    setAlignment(Qt::AlignCenter);
    setMargin(6);
    setMinimumWidth(figureWidth(*this) * 5);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void IndicatorLabel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(rect(), 4, 4);
    painter.end();
    QLabel::paintEvent(event);
}

Readout::Readout(int characters) {
    scaleFont(*this, 1.25, true);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setMargin(5);
    setMinimumWidth(figureWidth(*this) * characters + 2 * margin() + 6);
    setMinimumHeight(fontMetrics().height() + 2 * margin());
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void Readout::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.end();
    QLabel::paintEvent(event);
}

ScrollPage::ScrollPage(QWidget* content) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        if (now == nullptr || !isAncestorOf(now)) return;
        // What is clicked stays under the mouse; a click on another window reaches it only after the focus.
        const bool opened = !std::exchange(hadFocus_, true);
        const bool fromHere = before != nullptr && before->window() == window();
        if ((opened || fromHere) && QGuiApplication::mouseButtons() == Qt::NoButton) bringIntoView(*now);
    });
}

void ScrollPage::hideEvent(QHideEvent* event) {
    hadFocus_ = false;
    QScrollArea::hideEvent(event);
}

/// All of it: the toolkit's own way is content with a field's caret.
void ScrollPage::bringIntoView(const QWidget& focus) {
    const QRect place(focus.mapTo(widget(), QPoint()), focus.size());
    if (viewport()->rect().contains(QRect(focus.mapTo(viewport(), QPoint()), focus.size()))) return;
    constexpr int kMargin = 24;
    ensureVisible(place.right(), place.bottom(), 0, kMargin);
    ensureVisible(place.left(), place.top(), 0, kMargin);
}

ScrollColumn::ScrollColumn(QWidget* content) : ScrollPage(content) {
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(content->sizePolicy());
}

QSize ScrollColumn::minimumSizeHint() const {
    const QSize content = widget()->minimumSizeHint();
    const int bar = height() < content.height() ? verticalScrollBar()->sizeHint().width() : 0;
    return {content.width() + bar, ScrollPage::minimumSizeHint().height()};
}

void ScrollColumn::resizeEvent(QResizeEvent* event) {
    ScrollPage::resizeEvent(event);
    if (event->oldSize().height() != event->size().height()) updateGeometry();
}

void ListField::wheelEvent(QWheelEvent* event) {
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

LineField* field(const char* name, int characters) {
    auto* const line = named<LineField>(name);
    line->setFixedWidth(figureWidth(*line) * characters + kFieldEdges);
    line->setFixedHeight(fieldHeight(*line));
    return line;
}

QComboBox* listField(const char* name, int characters) {
    auto* const list = named<ListField>(name);
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setMinimumContentsLength(characters);
    list->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    list->setFixedHeight(fieldHeight(*list));
    return list;
}

QPushButton* button(const char* name) {
    auto* const button = named<QPushButton>(name);
    button->setMinimumHeight(button->fontMetrics().height() + 18);
    return button;
}

QPushButton* bigButton(const char* name) {
    auto* const button = named<QPushButton>(name);
    button->setProperty(kChoosesLetterFirst, true);
    scaleFont(*button, 1.3, true);
    button->setMinimumSize(figureWidth(*button) * 13 / 2, button->fontMetrics().height() * 2 + 18);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return button;
}

QAction* menuItem(QMenu& menu, const char* name, bool checkable) {
    QAction* const action = menu.addAction(QString());
    action->setObjectName(name);
    action->setCheckable(checkable);
    action->setMenuRole(QAction::NoRole);
    return action;
}

void keepRoom(QWidget& widget) {
    QSizePolicy policy = widget.sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget.setSizePolicy(policy);
}

void scaleFont(QWidget& widget, double factor, bool bold) {
    QFont font = widget.font();
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    widget.setFont(font);
}

QHBoxLayout* row(std::initializer_list<QWidget*> widgets, bool stretchBehind) {
    auto* const layout = new QHBoxLayout;
    layout->setSpacing(10);
    for (QWidget* widget : widgets) layout->addWidget(widget);
    if (stretchBehind) layout->addStretch();
    return layout;
}

QGroupBox* group(const QString& title, QLayout* content) {
    auto* const box = new QGroupBox(title);
    box->setLayout(content);
    return box;
}

QLabel* labelOf(QWidget& field, const QString& text) {
    auto* const label = new QLabel(text);
    label->setBuddy(&field);
    return label;
}

FieldGrid::FieldGrid() {
    setHorizontalSpacing(8);
    setVerticalSpacing(6);
    setColumnStretch(kRest, 1);
}

void FieldGrid::addField(const QString& label, QWidget* field, const QString& unit) {
    addField(label, field, new QLabel(unit));
}

void FieldGrid::addField(const QString& label, QWidget* field, QWidget* beside) {
    const int row = rowCount();
    addWidget(labelOf(*field, label), row, kLabel);
    addWidget(field, row, kField);
    addWidget(beside, row, kUnit);
}

void FieldGrid::addRow(QWidget* widget) { addWidget(widget, rowCount(), kLabel, 1, kColumns); }

void FieldGrid::addRow(QLayout* row) { addLayout(row, rowCount(), kLabel, 1, kColumns); }

}  // namespace vantrel::qt
