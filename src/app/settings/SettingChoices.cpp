#include "settings/SettingChoices.h"

#include "foundation/ProgrammingError.h"
#include "settings/L10n.h"

namespace talvenor {

const QList<AudioSource> &allAudioSources()
{
    static const QList<AudioSource> all{AudioSource::systemAudio, AudioSource::microphone, AudioSource::both};
    return all;
}

QString stringForm(AudioSource source)
{
    switch (source) {
    case AudioSource::systemAudio:
        return QStringLiteral("systemAudio");
    case AudioSource::microphone:
        return QStringLiteral("microphone");
    case AudioSource::both:
        return QStringLiteral("both");
    }
    programmingError(QStringLiteral("an audio source outside its enumeration"));
}

std::optional<AudioSource> audioSourceFromString(const QString &text)
{
    for (const AudioSource source : allAudioSources()) {
        if (stringForm(source) == text)
            return source;
    }
    return std::nullopt;
}

QString displayName(AudioSource source)
{
    switch (source) {
    case AudioSource::systemAudio:
        return L10n::systemAudio();
    case AudioSource::microphone:
        return L10n::microphone();
    case AudioSource::both:
        return L10n::bothAudio();
    }
    programmingError(QStringLiteral("an audio source outside its enumeration"));
}

const QList<TranscriptionLanguage> &allTranscriptionLanguages()
{
    static const QList<TranscriptionLanguage> all{TranscriptionLanguage::german,
                                                  TranscriptionLanguage::english};
    return all;
}

QString stringForm(TranscriptionLanguage language)
{
    switch (language) {
    case TranscriptionLanguage::german:
        return QStringLiteral("de-DE");
    case TranscriptionLanguage::english:
        return QStringLiteral("en-US");
    }
    programmingError(QStringLiteral("a transcription language outside its enumeration"));
}

std::optional<TranscriptionLanguage> transcriptionLanguageFromString(const QString &text)
{
    for (const TranscriptionLanguage language : allTranscriptionLanguages()) {
        if (stringForm(language) == text)
            return language;
    }
    return std::nullopt;
}

QString displayName(TranscriptionLanguage language)
{
    switch (language) {
    case TranscriptionLanguage::german:
        return QStringLiteral("Deutsch");
    case TranscriptionLanguage::english:
        return QStringLiteral("English");
    }
    programmingError(QStringLiteral("a transcription language outside its enumeration"));
}

} // namespace talvenor
