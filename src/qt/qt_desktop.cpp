#include "qt/qt_desktop.h"

#include <QDesktopServices>
#include <QUrl>

namespace vantrel::qt {

std::optional<platform::SystemVersion> QtDesktop::systemVersion() const {
    constexpr int kUnknownPlatform = 3;
    platform::SystemVersion version;
    version.platformId = kUnknownPlatform;
    return version;
}

bool QtDesktop::open(const std::string& file) {
    return QDesktopServices::openUrl(
        QUrl::fromLocalFile(QString::fromStdString(folders_.real(file).string())));
}

}  // namespace vantrel::qt
