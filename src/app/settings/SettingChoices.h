#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace talvenor {

/// What the user would like to be recorded. It is offered and stored; capture always takes both.
enum class AudioSource { systemAudio = 1, microphone, both };

[[nodiscard]] const QList<AudioSource> &allAudioSources();
[[nodiscard]] QString stringForm(AudioSource source);
[[nodiscard]] std::optional<AudioSource> audioSourceFromString(const QString &text);
/// The choice's name in the language of the application.
[[nodiscard]] QString displayName(AudioSource source);

/// The language that is spoken in a recording.
enum class TranscriptionLanguage { german = 1, english };

[[nodiscard]] const QList<TranscriptionLanguage> &allTranscriptionLanguages();
/// The locale identifier that the recogniser gets, "de-DE" or "en-US"; also the stored string.
[[nodiscard]] QString stringForm(TranscriptionLanguage language);
[[nodiscard]] std::optional<TranscriptionLanguage> transcriptionLanguageFromString(const QString &text);
/// The language's name in itself, whatever the language of the application.
[[nodiscard]] QString displayName(TranscriptionLanguage language);

} // namespace talvenor
