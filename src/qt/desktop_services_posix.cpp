#include <QProcess>
#include <QStandardPaths>

#include "qt/desktop_services.h"

namespace vantrel::qt {

bool hasHelpViewer() {
    constexpr int kPatience = 2000;  // milliseconds
    QProcess query;
    query.start(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"),
                                             QStringLiteral("application/vnd.ms-htmlhelp")});
    return query.waitForFinished(kPatience) && !query.readAllStandardOutput().trimmed().isEmpty();
}

/// By the desktop's speech service, whose client comes with it.
void speakAloud(const std::string& words) {
    const QString client = QStandardPaths::findExecutable(QStringLiteral("spd-say"));
    if (client.isEmpty()) return;
    QProcess::startDetached(client, {QStringLiteral("--application-name"), QStringLiteral("vantrel"),
                                     QStringLiteral("--language"), QStringLiteral("en"), QStringLiteral("--"),
                                     QString::fromStdString(words)});
}

/// Title bars belong to the window manager.
void colorTitleBar(QWidget& /*window*/, const Look& /*look*/) {}

}  // namespace vantrel::qt
