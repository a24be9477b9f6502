#pragma once

#include "platform/SpeechRecognizer.h"
#include "platform/linux/speech/RecognitionRuns.h"

#include <memory>

namespace talvenor {

/// German or English by whisper.cpp's command-line program.
class WhisperRecognizer : public SpeechRecognizer
{
public:
    /// What to run: absolute paths of the program and of a model for the language, "de" or "en".
    struct Engine
    {
        QString program;
        QString model;
        QString language;
    };

    WhisperRecognizer(std::shared_ptr<RecognitionRuns> runs, Engine engine);

    /// True while the program and the model are where they were found.
    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] bool supportsOnDeviceRecognition() const override { return true; }
    SpeechTaskState recognitionTask(const SpeechRequest &request, ResultHandler handler) override;

private:
    std::shared_ptr<RecognitionRuns> m_runs;
    Engine m_engine;
};

} // namespace talvenor
