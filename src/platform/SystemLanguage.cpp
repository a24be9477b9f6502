#include "platform/SystemLanguage.h"

#include <QLocale>

namespace talvenor {

bool systemSpeaksGerman()
{
    // The language of texts, which may differ from the one of numbers and dates.
    const QStringList languages = QLocale::system().uiLanguages();
    return !languages.isEmpty() && QLocale(languages.constFirst()).language() == QLocale::German;
}

} // namespace talvenor
