#pragma once

#include "platform/SpeechRecognizer.h"
#include "platform/linux/speech/RecognitionRuns.h"
#include "platform/linux/speech/SpeechModels.h"

#include <memory>

namespace talvenor {

/// American English by PocketSphinx, which runs in the helper program `talvenor-speech-worker`. Its words are
/// lower-case and without punctuation.
class PocketSphinxRecognizer : public SpeechRecognizer
{
public:
    /// `workerProgram` is the helper's absolute path.
    PocketSphinxRecognizer(std::shared_ptr<RecognitionRuns> runs, QString workerProgram,
                           PocketSphinxModel model);

    /// True while the helper and the model are where they were found.
    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] bool supportsOnDeviceRecognition() const override { return true; }
    SpeechTaskState recognitionTask(const SpeechRequest &request, ResultHandler handler) override;

private:
    std::shared_ptr<RecognitionRuns> m_runs;
    QString m_workerProgram;
    PocketSphinxModel m_model;
};

} // namespace talvenor
