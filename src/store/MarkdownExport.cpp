#include "store/MarkdownExport.h"

#include <QStringList>

namespace talvenor {

QString markdownDocument(const Recording &recording, AppLanguage language)
{
    const auto word = [german = language == AppLanguage::german](QStringView inEnglish,
                                                                 QStringView inGerman) {
        return (german ? inGerman : inEnglish).toString();
    };
    QString text = QStringLiteral("# ") + recording.title + u'\n';
    text += word(u"Date", u"Datum") + QStringLiteral(": ") + recording.formattedDate() + u'\n';
    text += word(u"Duration", u"Dauer") + QStringLiteral(": ") + recording.formattedDuration() + u'\n';
    if (!recording.participants.isEmpty()) {
        QStringList names;
        for (const Participant &participant : recording.participants)
            names.append(participant.name);
        text += word(u"Participants", u"Teilnehmer") + QStringLiteral(": ") +
                names.join(QStringLiteral(", ")) + u'\n';
    }
    text += QStringLiteral("\n## ") + word(u"Transcript", u"Transkript") + QStringLiteral("\n\n");
    text += recording.fullTranscript();
    if (recording.summary)
        text += QStringLiteral("\n\n## ") + word(u"Summary", u"Zusammenfassung") + QStringLiteral("\n\n") +
                *recording.summary;
    return text;
}

} // namespace talvenor
