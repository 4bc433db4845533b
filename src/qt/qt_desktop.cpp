#include "qt/qt_desktop.h"

#include <QDesktopServices>
#include <QUrl>

namespace vantrel::qt {

bool QtDesktop::open(const std::string& file) {
    return QDesktopServices::openUrl(
        QUrl::fromLocalFile(QString::fromStdString(folders_.real(file).string())));
}

}  // namespace vantrel::qt
