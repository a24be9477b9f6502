#pragma once

#include <QString>

#include <functional>

namespace talvenor {

/// Writes the sound of the audio file `audioPath` to a new file `wavePath` that only the user can read:
/// 16-bit PCM of one channel at 16 kHz in RIFF format. Throws PlatformError: domain "process" where writing
/// fails, other domains for the audio. Stops early, with an incomplete file, once `isStopped` says so.
/// Blocks.
void writeWaveFile(const QString &audioPath, const QString &wavePath, const std::function<bool()> &isStopped);

} // namespace talvenor
