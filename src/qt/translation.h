// The windows in the operator's language.
#pragma once

#include <QLocale>
#include <QString>

#include "platform/words.h"

class QCoreApplication;

namespace vantrel::qt {

/// Installs the toolkit's texts and the windows' own for a language, as far as there are translations.
void speak(QCoreApplication& application, const QLocale& language);

/// What a form or a dialog shows, in the operator's language.
QString inWords(const platform::Words& words);

}  // namespace vantrel::qt
