#pragma once

#include "foundation/Task.h"
#include "platform/SpeechRecognizer.h"
#include "store/Recording.h"

#include <memory>
#include <variant>

namespace talvenor {

/// Makes one answer of all that a recogniser reports.
///
/// Lives on the recogniser's thread once the recognition has started, and relies on its calls coming one at a
/// time; only the promise is shared with the waiting coroutine.
class RecognitionHandler
{
public:
    /// `service` expires when nobody is left to group the words; they are then answered as they came.
    RecognitionHandler(OneShot<QList<TranscriptSegment>> continuation,
                       std::weak_ptr<const std::monostate> service);

    /// Takes one report: exactly one of the two is not null. Ignored once the answer has been given.
    void handle(const SpeechResult *result, const SpeechError *error);

private:
    void handleResult(const SpeechResult &result);
    void handleError(const SpeechError &error);
    [[nodiscard]] QList<TranscriptSegment> answerFromWords() const;

    OneShot<QList<TranscriptSegment>> m_continuation;
    std::weak_ptr<const std::monostate> m_service;
    bool m_resumed = false;
    QList<TranscriptSegment> m_words; ///< of the latest result, which is always complete
};

} // namespace talvenor
