#include "platform/linux/speech/worker/UtteranceDecoder.h"

#include "foundation/LocalizedError.h"

#include <pocketsphinx.h>
#include <sphinxbase/err.h>

namespace talvenor {

namespace {

// Frames of the decoder's own clock; its default, which the models are made for.
constexpr int kMillisecondsPerFrame = 10;

struct ConfigurationDeleter
{
    void operator()(cmd_ln_t *configuration) const { cmd_ln_free_r(configuration); }
};

struct DecoderDeleter
{
    void operator()(ps_decoder_t *decoder) const { ps_free(decoder); }
};

[[noreturn]] void throwDecoderError(const char *description)
{
    throw PlatformError(QStringLiteral("pocketsphinx"), -1, QString::fromUtf8(description));
}

} // namespace

std::string spokenWord(const std::string &symbol)
{
    if (symbol.empty() || symbol.front() == '<' || symbol.front() == '[' || symbol.starts_with("++"))
        return {};
    // "read(2)" is the second way to say "read"; a word that merely has brackets is left alone.
    const std::size_t open = symbol.rfind('(');
    if (open == std::string::npos || open == 0 || symbol.back() != ')' || open + 2 >= symbol.size() ||
        symbol.find_first_not_of("0123456789", open + 1) != symbol.size() - 1)
        return symbol;
    return symbol.substr(0, open);
}

class UtteranceDecoder::Engine
{
public:
    explicit Engine(const DecoderModel &model)
    {
        err_set_logfp(nullptr); // it tells every step of the search
        // Utterances are found here already; a second cut inside the library would shift the times.
        m_configuration.reset(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", model.acousticModel.c_str(),
                                          "-lm", model.languageModel.c_str(), "-dict",
                                          model.dictionary.c_str(), "-remove_silence", "no", nullptr));
        if (m_configuration)
            m_decoder.reset(ps_init(m_configuration.get()));
        if (!m_decoder)
            throwDecoderError("The speech model cannot be loaded.");
    }

    [[nodiscard]] std::vector<DecodedWord> decode(const Utterance &utterance)
    {
        ps_decoder_t *const decoder = m_decoder.get();
        // The library counts frames from the start of a stream, so each utterance gets a stream of its own.
        if (ps_start_stream(decoder) < 0 || ps_start_utt(decoder) < 0 ||
            ps_process_raw(decoder, utterance.samples.data(), utterance.samples.size(), FALSE, FALSE) < 0 ||
            ps_end_utt(decoder) < 0)
            throwDecoderError("The speech recogniser has failed.");

        const std::int64_t startMilliseconds = utterance.startSample / 16;
        std::vector<DecodedWord> words;
        for (ps_seg_t *segment = ps_seg_iter(decoder); segment != nullptr; segment = ps_seg_next(segment)) {
            int firstFrame = 0;
            int lastFrame = 0;
            ps_seg_frames(segment, &firstFrame, &lastFrame);
            const char *const symbol = ps_seg_word(segment);
            std::string text = spokenWord(symbol != nullptr ? symbol : "");
            if (!text.empty())
                words.push_back({std::move(text), startMilliseconds + firstFrame * kMillisecondsPerFrame});
        }
        return words;
    }

private:
    std::unique_ptr<cmd_ln_t, ConfigurationDeleter> m_configuration;
    std::unique_ptr<ps_decoder_t, DecoderDeleter> m_decoder;
};

UtteranceDecoder::UtteranceDecoder(const DecoderModel &model) : m_engine(std::make_unique<Engine>(model))
{
}

UtteranceDecoder::~UtteranceDecoder() = default;

std::vector<DecodedWord> UtteranceDecoder::decode(const Utterance &utterance)
{
    return m_engine->decode(utterance);
}

} // namespace talvenor
