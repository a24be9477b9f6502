#include "speech/RecognitionHandler.h"

#include "settings/L10n.h"
#include "speech/SegmentGrouping.h"
#include "speech/TranscriptionError.h"
#include "speech/TranscriptionService.h"

namespace talvenor {

namespace {

bool meansNoSpeech(const SpeechError &error)
{
    return error.code == 1101 || error.code == 1110 ||
           error.localizedDescription.contains(QStringLiteral("No speech")) ||
           error.localizedDescription.contains(QStringLiteral("kein Sprach"));
}

TranscriptSegment makeNoSpeechLine()
{
    TranscriptSegment line;
    line.text = L10n::isGerman()
                    ? QStringLiteral("(Keine Sprache erkannt - versuche eine laengere Aufnahme mit "
                                     "deutlicher Sprache)")
                    : QStringLiteral("(No speech detected - try a longer recording with clear speech)");
    return line;
}

} // namespace

RecognitionHandler::RecognitionHandler(OneShot<QList<TranscriptSegment>> continuation,
                                       std::weak_ptr<const std::monostate> service)
    : m_continuation(std::move(continuation)), m_service(std::move(service))
{
}

void RecognitionHandler::handle(const SpeechResult *result, const SpeechError *error)
{
    if (m_resumed)
        return;
    if (result != nullptr)
        handleResult(*result);
    if (error != nullptr && !m_resumed)
        handleError(*error);
}

void RecognitionHandler::handleResult(const SpeechResult &result)
{
    m_words.clear();
    m_words.reserve(result.segments.size());
    for (const SpeechSegment &word : result.segments) {
        TranscriptSegment segment;
        segment.timestamp = word.timestamp;
        segment.text = word.substring;
        m_words.append(segment);
    }
    if (!result.isFinal)
        return;
    m_resumed = true;
    qCInfo(tLogger, "Transcription complete: %lld segments", static_cast<long long>(m_words.size()));
    m_continuation.resume(answerFromWords());
}

void RecognitionHandler::handleError(const SpeechError &error)
{
    m_resumed = true;
    if (!meansNoSpeech(error)) {
        qCCritical(tLogger, "Recognition error: %s code=%d", qUtf8Printable(error.localizedDescription),
                   error.code);
        m_continuation.fail(
            std::make_exception_ptr(TranscriptionError::recognitionFailed(error.localizedDescription)));
    } else if (!m_words.isEmpty()) {
        qCInfo(tLogger, "Partial result after error: %lld segments", static_cast<long long>(m_words.size()));
        m_continuation.resume(answerFromWords());
    } else {
        qCInfo(tLogger, "No speech detected in audio");
        m_continuation.resume(QList<TranscriptSegment>{makeNoSpeechLine()});
    }
}

QList<TranscriptSegment> RecognitionHandler::answerFromWords() const
{
    return m_service.expired() ? m_words : groupSegments(m_words);
}

} // namespace talvenor
