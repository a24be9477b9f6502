#include "settings/L10n.h"

#include "settings/AppSettings.h"

namespace talvenor::L10n {

AppLanguage current()
{
    return AppSettings::shared().appLanguage();
}

bool isGerman()
{
    return current() == AppLanguage::german;
}

#define TALVENOR_DEFINE_TEXT(name, english, german)                                                          \
    QString name()                                                                                           \
    {                                                                                                        \
        return isGerman() ? QStringView(german).toString() : QStringView(english).toString();                \
    }
TALVENOR_L10N_TABLE(TALVENOR_DEFINE_TEXT)
#undef TALVENOR_DEFINE_TEXT

QString noTranscriptHint()
{
    return isGerman()
               ? QStringLiteral("Klicke auf \"%1\" um die Aufnahme zu transkribieren.").arg(transcribe())
               : QStringLiteral("Click \"%1\" to transcribe the recording.").arg(transcribe());
}

QString noSummaryHint()
{
    return isGerman()
               ? QStringLiteral("Klicke auf \"%1\" um eine KI-Zusammenfassung zu erstellen.").arg(summarize())
               : QStringLiteral("Click \"%1\" to create an AI summary.").arg(summarize());
}

QString meetingTitle(const QString &date)
{
    return QStringLiteral("Meeting ") + date;
}

} // namespace talvenor::L10n
