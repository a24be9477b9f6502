#include "platform/linux/speech/worker/WorkerRun.h"

#include "platform/linux/media/AudioDecoder.h"

namespace talvenor {

void recognizeFile(const DecoderModel &model, const QString &audioPath,
                   const std::function<void(const std::vector<DecodedWord> &words)> &onWords)
{
    // The file first: what is wrong with it is told without waiting for the model.
    AudioDecoder audio(audioPath);
    std::vector<std::int16_t> samples;
    bool more = audio.read(samples);

    UtteranceDecoder decoder(model);
    UtteranceDetector detector;
    const auto decodeComplete = [&] {
        while (const std::optional<Utterance> utterance = detector.next()) {
            const std::vector<DecodedWord> words = decoder.decode(*utterance);
            if (!words.empty())
                onWords(words);
        }
    };
    for (; more; more = audio.read(samples)) {
        detector.add(samples);
        decodeComplete();
    }
    detector.finish();
    decodeComplete();
}

} // namespace talvenor
