#pragma once

#include <QList>
#include <QString>

#include <functional>

namespace talvenor {

/// One recognised word.
struct SpeechSegment
{
    QString substring;
    double timestamp = 0; ///< seconds from the start of the audio
};

/// What is recognised so far: always the complete list, not what was added.
struct SpeechResult
{
    QList<SpeechSegment> segments;
    bool isFinal = false;
};

/// Why a recognition ended without a final result.
struct SpeechError
{
    int code = 0; ///< 1101 and 1110 mean that no speech was found
    QString localizedDescription;
};

/// What kind of speech to expect.
enum class SpeechTaskHint { unspecified = 0, dictation = 1 };

/// The state of a recognition.
enum class SpeechTaskState { starting = 0, running = 1, finishing = 2, canceling = 3, completed = 4 };

/// What is to be recognised, and how.
struct SpeechRequest
{
    QString path; ///< of an audio file
    bool shouldReportPartialResults = false;
    bool addsPunctuation = false;
    SpeechTaskHint taskHint = SpeechTaskHint::unspecified;
    bool requiresOnDeviceRecognition = false;
};

/// Turns an audio file into words. Any thread.
///
/// The work is done outside this process; ending the program ends it.
class SpeechRecognizer
{
public:
    /// Gets partial results, then one final result or one error. Calls come one at a time, on a thread of the
    /// recogniser's; exactly one of the two arguments is not null.
    using ResultHandler = std::function<void(const SpeechResult *result, const SpeechError *error)>;

    SpeechRecognizer() = default;
    SpeechRecognizer(const SpeechRecognizer &) = delete;
    SpeechRecognizer &operator=(const SpeechRecognizer &) = delete;
    virtual ~SpeechRecognizer() = default;

    [[nodiscard]] virtual bool isAvailable() const = 0;
    [[nodiscard]] virtual bool supportsOnDeviceRecognition() const = 0;

    /// Starts a recognition, which goes on whether or not the recogniser lives; answers with its state.
    virtual SpeechTaskState recognitionTask(const SpeechRequest &request, ResultHandler handler) = 0;
};

} // namespace talvenor
