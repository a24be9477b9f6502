// What turns a stopped recording into a finished one: transcription, then summary.

#include "recorder/RecorderViewModel.h"

#include "foundation/LocalizedError.h"
#include "recorder/ParticipantsLine.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "settings/L10n.h"
#include "store/StorageService.h"

#include <algorithm>

namespace talvenor {

Task<> RecorderViewModel::transcribeRecording(Recording recording)
{
    const QPointer<RecorderViewModel> self(this);
    const std::optional<qsizetype> found = indexOf(recording.id);
    if (!found)
        co_return;
    // Kept across all waits and deliberately not looked up again: whatever has moved to this position gets
    // the result.
    const qsizetype index = *found;
    setIsProcessing(true);
    setProcessingStatus(L10n::processingTranscription());
    setStatusAndSave(index, RecordingStatus::transcribing);

    const bool authorized = co_await m_transcriptionService->requestAuthorization();
    if (!self)
        co_return;
    if (!authorized) {
        showError(L10n::isGerman() ? QStringLiteral("Spracherkennung nicht autorisiert.")
                                   : QStringLiteral("Speech recognition not authorized."));
        setStatusAndSave(index, RecordingStatus::failed);
        setIsProcessing(false); // alone among the exits, this one leaves the status text
        co_return;
    }

    const QString url = m_storageService.audioFileURL(recording);
    const TranscriptionLanguage language = m_settings.transcriptionLanguage();
    QList<TranscriptSegment> segments;
    std::exception_ptr failure;
    co_await m_audioCaptureService->finished(); // its last second may still be on its way to the disk
    if (!self)
        co_return;
    try {
        segments = co_await m_transcriptionService->transcribe(url, language);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (failure) {
        failProcessing(index, failure);
        co_return;
    }

    entryAt(index).transcriptSegments = segments;
    setStatusAndSave(index, RecordingStatus::completed);
    refreshSelection(recording.id, index);
    if (m_settings.autoSummarize() && m_auth.canUseSummary()) {
        setStatusAndSave(index, RecordingStatus::summarizing);
        co_await summarizeRecording(entryAt(index));
        if (!self)
            co_return;
    }
    setIsProcessing(false);
    setProcessingStatus(QString());
}

Task<> RecorderViewModel::summarizeRecording(Recording recording)
{
    const QPointer<RecorderViewModel> self(this);
    if (!m_auth.canUseSummary()) {
        showError(L10n::isGerman() ? QStringLiteral("KI-Zusammenfassung ist eine Premium-Funktion.")
                                   : QStringLiteral("AI summary is a premium feature."));
        co_return;
    }
    const std::optional<qsizetype> found = indexOf(recording.id);
    if (!found)
        co_return;
    const qsizetype index = *found; // kept across the wait, as above
    setIsProcessing(true);
    setProcessingStatus(L10n::processingSummary());
    setStatusAndSave(index, RecordingStatus::summarizing);

    QString raw;
    std::exception_ptr failure;
    try {
        raw = co_await m_summarizationService->summarize(recording.fullTranscript());
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (failure) {
        failProcessing(index, failure);
        co_return;
    }

    const ParsedSummary parsed = parseParticipants(raw);
    Recording &entry = entryAt(index);
    entry.summary = parsed.cleaned;
    for (const QString &name : parsed.names) {
        const bool known = std::any_of(
            entry.participants.cbegin(), entry.participants.cend(),
            [&name](const Participant &participant) { return participant.name.toLower() == name.toLower(); });
        if (!known)
            entry.participants.append({QUuid::createUuid(), name, true});
    }
    setStatusAndSave(index, RecordingStatus::completed);
    refreshSelection(recording.id, index);
    setIsProcessing(false);
    setProcessingStatus(QString());
}

void RecorderViewModel::failProcessing(qsizetype index, const std::exception_ptr &failure)
{
    showError(localizedDescription(failure));
    setStatusAndSave(index, RecordingStatus::failed);
    setIsProcessing(false);
    setProcessingStatus(QString());
}

void RecorderViewModel::setStatusAndSave(qsizetype index, RecordingStatus status)
{
    entryAt(index).status = status;
    Q_EMIT recordingsChanged();
    m_storageService.saveRecordings(m_recordings);
}

} // namespace talvenor
