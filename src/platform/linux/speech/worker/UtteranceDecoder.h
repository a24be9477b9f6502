#pragma once

#include "platform/linux/speech/worker/UtteranceDetector.h"

#include <memory>
#include <string>
#include <vector>

namespace talvenor {

/// Where the three parts of a PocketSphinx model lie.
struct DecoderModel
{
    std::string acousticModel; ///< a folder
    std::string languageModel; ///< a file
    std::string dictionary;    ///< a file
};

/// One recognised word.
struct DecodedWord
{
    std::string text;
    std::int64_t startMilliseconds = 0; ///< from the start of the whole audio
};

/// The word that a decoder means by `symbol`, without the number of its pronunciation ("the(2)"); empty for
/// silence, noise and the marks of a sentence's ends.
[[nodiscard]] std::string spokenWord(const std::string &symbol);

/// PocketSphinx, decoding one utterance after the other. It adapts to the channel as it goes, so utterances
/// belong in order. One thread at a time; a damaged model can end the process.
class UtteranceDecoder
{
public:
    /// Loads the model; throws PlatformError (domain "pocketsphinx") if it cannot be loaded.
    explicit UtteranceDecoder(const DecoderModel &model);
    ~UtteranceDecoder();
    UtteranceDecoder(const UtteranceDecoder &) = delete;
    UtteranceDecoder &operator=(const UtteranceDecoder &) = delete;

    /// The words of one utterance, in order; none if nothing was understood.
    [[nodiscard]] std::vector<DecodedWord> decode(const Utterance &utterance);

private:
    class Engine;
    std::unique_ptr<Engine> m_engine;
};

} // namespace talvenor
