#include "qt/qt_dialogs.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileIconProvider>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "qt/parts.h"
#include "qt/translation.h"
#include "qt/window_place.h"

namespace vantrel::qt {
namespace {

QString plain(const platform::Words& words) { return inWords(words).replace("\r\n", "\n"); }

QStyle::StandardPixmap iconOf(platform::Dialogs::Icon icon) {
    switch (icon) {
        case platform::Dialogs::Icon::kCritical:
            return QStyle::SP_MessageBoxCritical;
        case platform::Dialogs::Icon::kExclamation:
            return QStyle::SP_MessageBoxWarning;
        default:
            return QStyle::SP_MessageBoxInformation;
    }
}

/// Icons in the look's own colours instead of the desktop's.
class StyleIcons : public QFileIconProvider {
  public:
    QIcon icon(IconType type) const override {
        return QApplication::style()->standardIcon(type == Drive ? QStyle::SP_DriveHDIcon
                                                                 : QStyle::SP_DirIcon);
    }
    QIcon icon(const QFileInfo& info) const override {
        if (info.isDir()) return icon(Folder);
        return QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    }
};

void makeRoomForGloves(const QWidget& dialog) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        button->setMinimumHeight(button->fontMetrics().height() + 18);
}

/// The largest that a dialog may be, whatever frame it gets.
QSize largest() {
    constexpr QSize kReserve{32, 32};
    const platform::Rectangle area = workArea();
    return QSize(area.width, area.height) - kReserve;
}

/// As it would like to be, or as the screen lets it.
void fitOnScreen(QDialog& dialog, QSize atLeast = {}) {
    dialog.resize(dialog.sizeHint().expandedTo(atLeast).boundedTo(largest()));
}

/// As wide as its entries, as far as the screen lets it, and high enough for some, with rows that a glove
/// hits.
void showWhole(QListWidget& list) {
    constexpr int kEdges = 28;
    constexpr int kAround = 40;
    constexpr int kRows = 5;
    constexpr int kPadding = 14;
    const int rowHeight = list.fontMetrics().height() + kPadding;
    int widest = 0;
    for (int row = 0; row < list.count(); ++row)
        widest = std::max(widest, list.fontMetrics().horizontalAdvance(list.item(row)->text()) + kEdges);
    for (int row = 0; row < list.count(); ++row)
        list.item(row)->setSizeHint({widest - kEdges / 2, rowHeight});
    list.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    list.setMinimumSize(std::min(widest, largest().width() - kAround), rowHeight * kRows);
}

/// Paths and addresses may be longer than a line; they break where a line is full.
QString breakable(const QString& text) {
    constexpr int kLongest = 40;
    constexpr QChar kMayBreak(0x200B);
    QString broken;
    int run = 0;
    for (const QChar letter : text) {
        run = letter.isSpace() ? 0 : run + 1;
        if (run > kLongest) {
            broken += kMayBreak;
            run = 1;
        }
        broken += letter;
    }
    return broken;
}

/// A text in lines that are good to read.
QLabel* message(const QString& text) {
    constexpr int kLetters = 70;
    constexpr int kAround = 140;  // the icon and the edges
    auto* const label = new QLabel(breakable(text));
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    const int natural = label->sizeHint().width();
    label->setWordWrap(true);
    const int width =
        std::min({natural, label->fontMetrics().averageCharWidth() * kLetters, largest().width() - kAround});
    label->setFixedSize(width, label->heightForWidth(width));
    return label;
}

}  // namespace

void QtDialogs::messageBox(const std::string& title, const platform::Words& text, Icon icon,
                           Buttons buttons) {
    QDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle(QString::fromStdString(title));
    auto* const picture = new QLabel;
    const int side = dialog.style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    picture->setPixmap(dialog.style()->standardIcon(iconOf(icon)).pixmap(side));
    QLabel* const lines = message(plain(text));
    auto* const words = new ScrollPage(lines);
    words->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    words->setMinimumWidth(lines->width() + dialog.style()->pixelMetric(QStyle::PM_ScrollBarExtent));
    words->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (const auto& [key, step] : {std::pair{Qt::Key_PageUp, QScrollBar::SliderPageStepSub},
                                    {Qt::Key_PageDown, QScrollBar::SliderPageStepAdd}})
        QObject::connect(new QShortcut(key, &dialog), &QShortcut::activated, words,
                         [words, step = step] { words->verticalScrollBar()->triggerAction(step); });
    auto* const answers =
        new QDialogButtonBox(buttons == Buttons::kOkCancel ? QDialogButtonBox::Ok | QDialogButtonBox::Cancel
                                                           : QDialogButtonBox::Ok);
    QObject::connect(answers, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(answers, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* const grid = new QGridLayout(&dialog);
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(12);
    grid->addWidget(picture, 0, 0, Qt::AlignTop);
    grid->addWidget(words, 0, 1);
    grid->addWidget(answers, 1, 0, 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(0, 1);
    makeRoomForGloves(dialog);
    fitOnScreen(dialog);
    answers->button(QDialogButtonBox::Ok)->setFocus();
    dialog.exec();
}

std::string QtDialogs::chooseFolder(const platform::Words& title) {
    return choosePath(title, startFolder_, QFileDialog::Directory);
}

std::string QtDialogs::chooseFile(const platform::Words& title) {
    std::string file =
        choosePath(title, lastFolder_.empty() ? startFolder_ : lastFolder_, QFileDialog::ExistingFile);
    if (!file.empty()) lastFolder_ = folders_.real(file).parent_path().string();
    return file;
}

std::string QtDialogs::choosePath(const platform::Words& title, const std::string& begin,
                                  QFileDialog::FileMode mode) {
    StyleIcons icons;
    QFileDialog dialog(QApplication::activeWindow(), plain(title),
                       QString::fromStdString(folders_.real(begin).string()));
    // The desktop's own dialog would not follow the night's colours.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::ShowDirsOnly, mode == QFileDialog::Directory);
    dialog.setFileMode(mode);
    dialog.setIconProvider(&icons);
    dialog.setSizeGripEnabled(false);
    makeRoomForGloves(dialog);
    fitOnScreen(dialog, {760, 520});
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return folders_.text(dialog.selectedFiles().front().toStdString());
}

std::string QtDialogs::choose(const platform::Words& title, const std::vector<Choice>& choices,
                              const std::string& current) {
    QDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle(plain(title));
    auto* const layout = new QVBoxLayout(&dialog);
    auto* const list = new QListWidget;
    list->setAccessibleName(plain(title));
    layout->addWidget(list);
    for (const Choice& choice : choices) {
        list->addItem(QString::fromStdString(choice.description));
        if (choice.id == current) list->setCurrentRow(list->count() - 1);
    }
    showWhole(*list);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(list, &QListWidget::itemActivated, &dialog, &QDialog::accept);
    makeRoomForGloves(dialog);
    fitOnScreen(dialog);
    if (dialog.exec() != QDialog::Accepted || list->selectedItems().isEmpty()) return {};
    return choices[static_cast<std::size_t>(list->row(list->selectedItems().front()))].id;
}

}  // namespace vantrel::qt
