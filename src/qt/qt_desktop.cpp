#include "qt/qt_desktop.h"

#include <QDesktopServices>
#include <QUrl>

namespace vantrel::qt {

/// Pages go to the browser, everything else is a file.
bool QtDesktop::open(const std::string& file) {
    const QString name = QString::fromStdString(file);
    if (name.contains(QStringLiteral("://"))) return QDesktopServices::openUrl(QUrl(name));
    return QDesktopServices::openUrl(
        QUrl::fromLocalFile(QString::fromStdString(folders().real(file).string())));
}

}  // namespace vantrel::qt
