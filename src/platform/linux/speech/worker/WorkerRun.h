#pragma once

#include "platform/linux/speech/worker/UtteranceDecoder.h"

#include <QString>

#include <functional>

namespace talvenor {

/// Recognises the whole file at `audioPath` and hands over the words of each utterance as soon as it is
/// decoded, in order of time. Throws PlatformError: domain "pocketsphinx" for the model, other domains for
/// the file. Blocks.
void recognizeFile(const DecoderModel &model, const QString &audioPath,
                   const std::function<void(const std::vector<DecodedWord> &words)> &onWords);

} // namespace talvenor
