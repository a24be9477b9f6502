#include "platform/linux/speech/LinuxSpeech.h"

#include "platform/linux/speech/SpeechEngines.h"

namespace talvenor {

void installLinuxSpeech(Platform &platform)
{
    // What is under way ends when the platform lets go of its maker of recognisers.
    platform.createSpeechRecognizer = [runs = std::make_shared<RecognitionRuns>()](const QString &locale) {
        return speechRecognizerForLocale(locale, SpeechSurroundings::standard(), runs);
    };
}

} // namespace talvenor
