#include "qt/qt_desktop.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace vantrel::qt {
namespace {

/// Whether the desktop has a program for files of this kind.
bool hasProgramFor(const QString& kind) {
    constexpr int kPatience = 2000;  // milliseconds
    QProcess query;
    query.start(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"), kind});
    return query.waitForFinished(kPatience) && !query.readAllStandardOutput().trimmed().isEmpty();
}

/// The web pages beside a help file, for desktops that can't show it; otherwise the file itself.
QString readable(const QString& file) {
    const QFileInfo info(file);
    const QString pages = info.absolutePath() + QStringLiteral("/manual/index.html");
    const bool isHelp = info.suffix() == QStringLiteral("chm");
    if (!isHelp || !QFileInfo::exists(pages)) return file;
    return hasProgramFor(QStringLiteral("application/vnd.ms-htmlhelp")) ? file : pages;
}

}  // namespace

/// Pages go to the browser, everything else is a file.
bool QtDesktop::open(const std::string& file) {
    const QString name = QString::fromStdString(file);
    if (name.contains(QStringLiteral("://"))) return QDesktopServices::openUrl(QUrl(name));
    const QString real = QString::fromStdString(folders().real(file).string());
    return QDesktopServices::openUrl(QUrl::fromLocalFile(readable(real)));
}

}  // namespace vantrel::qt
