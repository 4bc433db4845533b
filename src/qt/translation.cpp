#include "qt/translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <string>
#include <utility>

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

QString inWords(const platform::Words& words) {
    return QString::fromStdString(words.in([](const std::string& pattern) {
        return QCoreApplication::translate("Words", pattern.c_str()).toStdString();
    }));
}

}  // namespace vantrel::qt
