#pragma once

#include "platform/SpeechRecognizer.h"
#include "platform/linux/speech/RecognitionRuns.h"

#include <QStringList>

#include <memory>

namespace talvenor {

/// Where programs and models are looked for.
struct SpeechSurroundings
{
    QStringList modelFolders;
    QStringList programFolders; ///< for whisper.cpp's program
    QStringList workerFolders;  ///< for our own helper program

    /// What the environment says now: the usual model folders, PATH, and the places of the helper beside the
    /// running program. Needs the application object. Any thread.
    [[nodiscard]] static SpeechSurroundings standard();
};

/// The best recogniser for the locale "de-DE" or "en-US": whisper.cpp with a model for the language, else
/// PocketSphinx for en-US, else none. The log says what was chosen, or what is missing and where it was
/// looked for. Blocks. Any thread.
[[nodiscard]] std::unique_ptr<SpeechRecognizer>
speechRecognizerForLocale(const QString &localeIdentifier, const SpeechSurroundings &surroundings,
                          const std::shared_ptr<RecognitionRuns> &runs);

} // namespace talvenor
