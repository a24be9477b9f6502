#include "screens/L10nTexts.h"

#include "settings/AppSettings.h"
#include "settings/L10n.h"

namespace talvenor {

L10nTexts::L10nTexts(QObject *parent) : QObject(parent), m_current(L10n::current())
{
    connect(&AppSettings::shared(), &AppSettings::changed, this, [this] {
        // Most changes are of other settings, and a screen full of texts is not worth asking again for them.
        if (L10n::current() == m_current)
            return;
        m_current = L10n::current();
        Q_EMIT changed();
    });
}

bool L10nTexts::isGerman() const
{
    return L10n::isGerman();
}

QString L10nTexts::currentForm() const
{
    return stringForm(L10n::current());
}

void L10nTexts::setCurrent(const QString &form)
{
    const std::optional<AppLanguage> language = appLanguageFromString(form);
    if (language && *language != L10n::current())
        AppSettings::shared().setAppLanguage(*language);
}

QStringList L10nTexts::allForms() const
{
    QStringList forms;
    for (const AppLanguage language : allAppLanguages())
        forms.append(stringForm(language));
    return forms;
}

QString L10nTexts::flag(const QString &form) const
{
    const std::optional<AppLanguage> language = appLanguageFromString(form);
    return language ? talvenor::flag(*language) : QString();
}

QString L10nTexts::displayName(const QString &form) const
{
    const std::optional<AppLanguage> language = appLanguageFromString(form);
    return language ? talvenor::displayName(*language) : QString();
}

QString L10nTexts::noTranscriptHint() const
{
    return L10n::noTranscriptHint();
}

QString L10nTexts::noSummaryHint() const
{
    return L10n::noSummaryHint();
}

#define TALVENOR_TEXT_READER(name, english, german)                                                          \
    QString L10nTexts::name() const                                                                          \
    {                                                                                                        \
        return L10n::name();                                                                                 \
    }
TALVENOR_L10N_TABLE(TALVENOR_TEXT_READER)
#undef TALVENOR_TEXT_READER

} // namespace talvenor
