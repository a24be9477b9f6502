#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace talvenor {

/// Finds whisper.cpp's command-line program in `folders`, in their order, under the names that packages give
/// it. One whose help does not name the options that we need is an older one and passed by, and told in
/// `problems`. Runs what it finds; blocks for some seconds at most.
[[nodiscard]] std::optional<QString> findWhisperProgram(const QStringList &folders, QStringList &problems);

} // namespace talvenor
