// The windows in the operator's language.
#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>
#include <string>
#include <utility>
#include <vector>

class QCoreApplication;

namespace vantrel::qt {

/// Installs the toolkit's texts and the windows' own for a language, as far as there are translations.
void speak(QCoreApplication& application, const QLocale& language);

/// What a form shows, in the operator's language when it is one of `ownTexts`; as it is otherwise. Captions,
/// messages and log lines that notes, scripts and manuals refer to are the same in every language.
QString inWords(const std::string& form, const std::string& text);

/// The translated texts of forms: form, or "AnyForm", and text, in which %1 and %2 stand for names and
/// figures.
const std::vector<std::pair<const char*, const char*>>& ownTexts();

}  // namespace vantrel::qt
