// Construction, observable state, and the session from the press of the button to the finished entry.

#include "recorder/RecorderViewModel.h"

#include "foundation/LocalizedError.h"
#include "foundation/ProgrammingError.h"
#include "platform/Formatting.h"
#include "service/APIService.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "settings/L10n.h"
#include "store/StorageService.h"

#include <algorithm>

namespace talvenor {

RecorderViewModel::RecorderViewModel(QObject *parent)
    : QObject(parent), m_audioCaptureService(std::make_unique<AudioCaptureService>()),
      m_transcriptionService(std::make_unique<TranscriptionService>()),
      m_summarizationService(std::make_unique<SummarizationService>()),
      m_storageService(StorageService::shared()), m_settings(AppSettings::shared()),
      m_auth(AuthService::shared()), m_api(APIService::shared())
{
    loadRecordings();
    setupBindings();
}

RecorderViewModel::~RecorderViewModel() = default;

void RecorderViewModel::setupBindings()
{
    // Levels arrive through the event loop and with the value that they had when they were published.
    connect(m_audioCaptureService.get(), &AudioCaptureService::audioLevelChanged, this, [this] {
        QMetaObject::invokeMethod(
            this,
            [this, level = m_audioCaptureService->audioLevel()] {
                m_audioLevel = level;
                Q_EMIT audioLevelChanged();
            },
            Qt::QueuedConnection);
    });
    connect(m_audioCaptureService.get(), &AudioCaptureService::audioLevelsChanged, this, [this] {
        QMetaObject::invokeMethod(
            this,
            [this, levels = m_audioCaptureService->audioLevels()] {
                m_audioLevels = levels;
                Q_EMIT audioLevelsChanged();
            },
            Qt::QueuedConnection);
    });
}

void RecorderViewModel::loadRecordings()
{
    QList<Recording> loaded = m_storageService.loadRecordings();
    std::sort(loaded.begin(), loaded.end(),
              [](const Recording &a, const Recording &b) { return a.date > b.date; });
    m_recordings = std::move(loaded);
    Q_EMIT recordingsChanged();
}

void RecorderViewModel::toggleRecording()
{
    if (m_isRecording)
        stopRecording();
    else
        startRecording();
}

void RecorderViewModel::startRecording()
{
    // A second press while capture is starting comes here again and makes a second entry; there is no guard.
    if (!m_auth.canRecord()) {
        showError(L10n::isGerman() ? QStringLiteral("Aufnahme-Limit erreicht. Bitte upgrade dein Abo.")
                                   : QStringLiteral("Recording limit reached. Please upgrade your plan."));
        return;
    }
    const QString fileName = m_storageService.generateAudioFileName();
    const QString url = m_settings.audioDirectory() + u'/' + fileName;
    Recording entry;
    entry.title = generateTitle();
    entry.audioFileName = fileName;
    m_currentRecordingId = entry.id;
    m_recordings.prepend(entry);
    Q_EMIT recordingsChanged();
    setSelectedRecording(entry);
    m_storageService.saveRecordings(m_recordings);
    startTask(this, [this, id = entry.id, url] { return captureNewEntry(id, url); });
}

Task<> RecorderViewModel::captureNewEntry(QUuid id, QString url)
{
    const QPointer<RecorderViewModel> self(this);
    std::exception_ptr failure;
    try {
        // Sound without an entry would be lost to the user, so the entry comes to the disk first.
        co_await m_storageService.allSaved();
        if (!self)
            co_return;
        co_await m_audioCaptureService->startRecording(url);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return;
    if (!failure) {
        setIsRecording(true);
        setRecordingDuration(0);
        startTimer();
        co_return;
    }
    // The dead id and the selection stay as they are: the user is still looking at the entry that has failed.
    showError(localizedDescription(failure));
    m_recordings.removeIf([&id](const Recording &recording) { return recording.id == id; });
    Q_EMIT recordingsChanged();
    m_storageService.saveRecordings(m_recordings);
}

void RecorderViewModel::stopRecording()
{
    stopTimer();
    // The URL is known from the entry.
    (void)m_audioCaptureService->stopRecording();
    setIsRecording(false);
    if (!m_currentRecordingId)
        return;
    const std::optional<qsizetype> found = indexOf(*m_currentRecordingId);
    if (!found)
        return; // deleted during the session; the id stays until the next start overwrites it
    const qsizetype index = *found;
    Recording &entry = m_recordings[index];
    entry.duration = m_recordingDuration;
    entry.status = RecordingStatus::completed;
    if (entry.title.isEmpty())
        entry.title = L10n::meetingTitle(entry.formattedDate());
    Q_EMIT recordingsChanged();
    m_storageService.saveRecordings(m_recordings);
    setSelectedRecording(m_recordings.at(index));
    startTask(this, [this, index] { return logUsage(index); });
    if (m_settings.autoTranscribe())
        startTask(this, [this, copy = m_recordings.at(index)] { return transcribeRecording(copy); });
    m_currentRecordingId.reset();
}

Task<> RecorderViewModel::logUsage(qsizetype index)
{
    // The one place where a position is remembered here; it is read before the first wait.
    const QString title = entryAt(index).title;
    const double duration = m_recordingDuration;
    AuthService &auth = m_auth;
    try {
        co_await m_api.logRecording(title, duration);
    } catch (...) {
        // A recording that could not be logged is not counted, and that is all: no retry and no message.
    }
    co_await auth.refreshProfile();
}

void RecorderViewModel::startTimer()
{
    m_timer = std::make_unique<QTimer>();
    m_timer->setInterval(1000);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer.get(), &QTimer::timeout, this, [this] {
        startTask(this, [this]() -> Task<> {
            setRecordingDuration(m_recordingDuration + 1.0);
            co_return;
        });
    });
    m_timer->start();
}

void RecorderViewModel::stopTimer()
{
    m_timer.reset();
}

QString RecorderViewModel::generateTitle()
{
    return L10n::meetingTitle(
        formatDatePattern(QDateTime::currentDateTime(), QStringLiteral("dd.MM.yyyy HH:mm")));
}

void RecorderViewModel::showError(const QString &message)
{
    m_errorMessage = message;
    Q_EMIT errorMessageChanged();
    setShowError(true);
}

void RecorderViewModel::setShowError(bool show)
{
    m_showError = show;
    Q_EMIT showErrorChanged();
}

void RecorderViewModel::setSelectedRecording(std::optional<Recording> recording)
{
    m_selectedRecording = std::move(recording);
    Q_EMIT selectedRecordingChanged();
}

void RecorderViewModel::setIsRecording(bool recording)
{
    m_isRecording = recording;
    Q_EMIT isRecordingChanged();
}

void RecorderViewModel::setRecordingDuration(double seconds)
{
    m_recordingDuration = seconds;
    Q_EMIT recordingDurationChanged();
}

void RecorderViewModel::setIsProcessing(bool processing)
{
    m_isProcessing = processing;
    Q_EMIT isProcessingChanged();
}

void RecorderViewModel::setProcessingStatus(const QString &status)
{
    m_processingStatus = status;
    Q_EMIT processingStatusChanged();
}

std::optional<qsizetype> RecorderViewModel::indexOf(const QUuid &id) const
{
    for (qsizetype index = 0; index < m_recordings.size(); ++index) {
        if (m_recordings.at(index).id == id)
            return index;
    }
    return std::nullopt;
}

Recording &RecorderViewModel::entryAt(qsizetype index)
{
    if (index < 0 || index >= m_recordings.size()) {
        // What was saved before must reach the disk before the process ends.
        m_storageService.waitUntilSaved();
        programmingError(QStringLiteral("a remembered position lies beyond the end of the list"));
    }
    return m_recordings[index];
}

} // namespace talvenor
