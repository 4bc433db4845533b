#include "qt/qt_desktop.h"

#include <QApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QUrl>
#include <system_error>

namespace vantrel::qt {
namespace {

/// Whether the desktop has a program for files of this kind.
bool hasProgramFor(const QString& kind) {
    constexpr int kPatience = 2000;  // milliseconds
    QProcess query;
    query.start(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"), kind});
    return query.waitForFinished(kPatience) && !query.readAllStandardOutput().trimmed().isEmpty();
}

}  // namespace

bool QtDesktop::open(const std::string& file) {
    const QString name = QString::fromStdString(file);
    if (name.contains(QStringLiteral("://"))) return QDesktopServices::openUrl(QUrl(name));
    const QString real = QString::fromStdString(folders().real(file).string());
    return QDesktopServices::openUrl(QUrl::fromLocalFile(real));
}

std::filesystem::path QtDesktop::shownFor(const std::string& file) const {
    const std::filesystem::path help = folders().real(file);
    const std::filesystem::path pages = help.parent_path() / "manual" / "index.html";
    std::error_code ignored;
    const bool shown = help.extension() != ".chm" || !std::filesystem::exists(pages, ignored) ||
                       (std::filesystem::exists(help, ignored) &&
                        hasProgramFor(QStringLiteral("application/vnd.ms-htmlhelp")));
    return shown ? help : pages;
}

void QtDesktop::beep() { QApplication::beep(); }

}  // namespace vantrel::qt
