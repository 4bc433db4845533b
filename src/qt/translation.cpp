#include "qt/translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QTranslator>

#include "platform/user_machine.h"

namespace vantrel::qt {

void speak(QCoreApplication& application, const QLocale& language) {
    const QString own = QString::fromStdString((platform::sharedDataFolder() / "translations").string());
    const QString toolkit = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    for (const auto& [name, folder] : {std::pair{"vantrel", own}, std::pair{"qtbase", toolkit}}) {
        auto* const translator = new QTranslator(&application);
        if (translator->load(language, name, "_", folder)) QCoreApplication::installTranslator(translator);
    }
}

namespace {

/// The names and figures of a text that is made like the pattern; empty when it isn't.
QStringList partsOf(const QString& text, const char* pattern) {
    QString expression = QRegularExpression::escape(QString::fromUtf8(pattern));
    for (const char* place : {"\\%1", "\\%2", "\\%3", "\\%4"}) expression.replace(place, "(.+)");
    const auto match = QRegularExpression(QRegularExpression::anchoredPattern(expression)).match(text);
    return match.hasMatch() ? match.capturedTexts().mid(1) : QStringList();
}

}  // namespace

QString inWords(const std::string& form, const std::string& text) {
    QString plain = QString::fromStdString(text);
    for (const auto& [owner, own] : ownTexts()) {
        if (form != owner) continue;
        if (text == own) return QCoreApplication::translate(owner, own);
        const QStringList parts =
            std::string(own).find("%1") == std::string::npos ? QStringList() : partsOf(plain, own);
        if (parts.isEmpty()) continue;
        QString words = QCoreApplication::translate(owner, own);
        for (const QString& part : parts) words = words.arg(inWords(form, part.toStdString()));
        return words;
    }
    return plain;
}

}  // namespace vantrel::qt
