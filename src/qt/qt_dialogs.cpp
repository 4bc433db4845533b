#include "qt/qt_dialogs.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "qt/translation.h"

namespace vantrel::qt {
namespace {

QString plain(const std::string& text) { return inWords("dialog", text).replace("\r\n", "\n"); }

QMessageBox::Icon iconOf(platform::Dialogs::Icon icon) {
    switch (icon) {
        case platform::Dialogs::Icon::kCritical:
            return QMessageBox::Critical;
        case platform::Dialogs::Icon::kExclamation:
            return QMessageBox::Warning;
        default:
            return QMessageBox::Information;
    }
}

/// Icons in the look's own colours instead of the desktop's.
class StyleIcons : public QFileIconProvider {
  public:
    QIcon icon(IconType type) const override {
        return QApplication::style()->standardIcon(type == Drive ? QStyle::SP_DriveHDIcon
                                                                 : QStyle::SP_DirIcon);
    }
    QIcon icon(const QFileInfo& /*info*/) const override { return icon(Folder); }
};

void makeRoomForGloves(const QWidget& dialog) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        button->setMinimumHeight(button->fontMetrics().height() + 18);
}

/// As wide as its entries and high enough for some, with rows that a glove hits.
void showWhole(QListWidget& list) {
    constexpr int kEdges = 28;
    constexpr int kRows = 5;
    constexpr int kPadding = 14;
    const int rowHeight = list.fontMetrics().height() + kPadding;
    for (int row = 0; row < list.count(); ++row) list.item(row)->setSizeHint({0, rowHeight});
    list.setMinimumHeight(rowHeight * kRows);
    for (int row = 0; row < list.count(); ++row) {
        const int needed = list.fontMetrics().horizontalAdvance(list.item(row)->text()) + kEdges;
        list.setMinimumWidth(std::max(list.minimumWidth(), needed));
    }
}

}  // namespace

void QtDialogs::messageBox(const std::string& title, const std::string& text, Icon icon, Buttons buttons) {
    QMessageBox box(iconOf(icon), QString::fromStdString(title), plain(text),
                    buttons == Buttons::kOkCancel ? QMessageBox::Ok | QMessageBox::Cancel : QMessageBox::Ok,
                    QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    makeRoomForGloves(box);
    box.exec();
}

std::string QtDialogs::chooseFolder(const std::string& title) {
    StyleIcons icons;
    QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(title),
                       QString::fromStdString(folders_.real(startFolder_).string()));
    // The desktop's own dialog would not follow the night's colours.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setIconProvider(&icons);
    dialog.setSizeGripEnabled(false);
    makeRoomForGloves(dialog);
    dialog.resize(dialog.sizeHint().expandedTo({760, 520}));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return folders_.text(dialog.selectedFiles().front().toStdString());
}

std::string QtDialogs::choose(const std::string& title, const std::vector<Choice>& choices,
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
    if (dialog.exec() != QDialog::Accepted || list->selectedItems().isEmpty()) return {};
    return choices[static_cast<std::size_t>(list->row(list->selectedItems().front()))].id;
}

}  // namespace vantrel::qt
