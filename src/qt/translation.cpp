#include "qt/translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QTranslator>
#include <optional>
#include <string_view>
#include <vector>

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

constexpr std::string_view kAnyForm = "AnyForm";

/// A text of the program's own, ready to be recognised: windows ask for hundreds at a time.
struct KnownText {
    const char* owner;  // a form, or kAnyForm
    const char* text;
    std::optional<QRegularExpression> pattern;  // where names and figures stand in it
};

std::vector<KnownText> knownTexts() {
    std::vector<KnownText> known;
    for (const auto& [owner, text] : ownTexts()) {
        known.push_back({owner, text, std::nullopt});
        if (std::string_view(text).find("%1") == std::string_view::npos) continue;
        QString expression = QRegularExpression::escape(QString::fromUtf8(text));
        for (const char* place : {"\\%1", "\\%2", "\\%3", "\\%4"}) expression.replace(place, "(.+)");
        known.back().pattern.emplace(QRegularExpression::anchoredPattern(expression));
        known.back().pattern->optimize();
    }
    return known;
}

}  // namespace

QString inWords(const std::string& form, const std::string& text) {
    static const std::vector<KnownText> known = knownTexts();
    const QString plain = QString::fromStdString(text);
    for (const KnownText& own : known) {
        if (form != own.owner && kAnyForm != own.owner) continue;
        if (text == own.text) return QCoreApplication::translate(own.owner, own.text);
        if (!own.pattern) continue;
        const auto match = own.pattern->match(plain);
        if (!match.hasMatch()) continue;
        QString words = QCoreApplication::translate(own.owner, own.text);
        for (const QString& part : match.capturedTexts().mid(1))
            words = words.arg(inWords(form, part.toStdString()));
        return words;
    }
    return plain;
}

}  // namespace vantrel::qt
