#pragma once

#include "platform/SpeechRecognizer.h"

#include <QByteArray>

#include <optional>

namespace talvenor {

/// What the application and its helper program `talvenor-speech-worker` agree on.
///
/// The helper is called with four arguments: the folder of the acoustic model, the files of the language
/// model and of the dictionary, and the audio file. On its standard output it writes one line for each word,
/// as soon as it is known: "word", a tab, the time in milliseconds from the start of the audio, a tab, the
/// word. A line "error", tab, text says for the user why it cannot go on; a line "end" follows the last word,
/// so that an output that was cut short is not taken for a whole one.
namespace WorkerProtocol {

/// The helper's file name.
inline constexpr const char *kProgramName = "talvenor-speech-worker";

/// How the helper ends.
enum ExitCode { success = 0, wrongArguments = 2, modelNotLoaded = 3, audioNotReadable = 4 };

[[nodiscard]] QByteArray wordLine(qint64 milliseconds, const QByteArray &word);
[[nodiscard]] QByteArray errorLine(const QString &description);
[[nodiscard]] QByteArray endLine();

/// The reverse of `wordLine`, the line end left out; absent for every other line.
[[nodiscard]] std::optional<SpeechSegment> parseWordLine(const QByteArray &line);
/// The reverse of `errorLine`; absent for every other line.
[[nodiscard]] std::optional<QString> parseErrorLine(const QByteArray &line);
[[nodiscard]] bool isEndLine(const QByteArray &line);

} // namespace WorkerProtocol

} // namespace talvenor
