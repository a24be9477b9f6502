#pragma once

#include "platform/SpeechRecognizer.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace talvenor {

/// Reads the JSON that whisper.cpp's `-oj` writes: `transcription` holds an entry for each word, with its
/// text and `offsets.from` in milliseconds.
///
/// Absent if it is no such document. Invalid UTF-8 in it becomes replacement characters, since the program
/// cuts characters apart. Starts never fall, since the program lets a window's first word begin too early.
/// Marks in square brackets ("[BLANK_AUDIO]") are not words; text in round ones is taken unless there is
/// nothing else.
[[nodiscard]] std::optional<QList<SpeechSegment>> parseWhisperJson(const QByteArray &json);

/// Reads one line of the program's standard output, "[hh:mm:ss.mmm --> hh:mm:ss.mmm]  word"; absent for every
/// other line and for marks.
[[nodiscard]] std::optional<SpeechSegment> parseWhisperLine(const QByteArray &line);

} // namespace talvenor
