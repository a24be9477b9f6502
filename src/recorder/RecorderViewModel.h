#pragma once

#include "audio/AudioCaptureService.h"
#include "foundation/Task.h"
#include "speech/SummarizationService.h"
#include "speech/TranscriptionService.h"
#include "store/Recording.h"

#include <QList>
#include <QObject>
#include <QTimer>
#include <QUuid>

#include <memory>
#include <optional>

namespace talvenor {

class APIService;
class AppSettings;
class AuthService;
class StorageService;

/// The hub of the program: the list of recordings, the selection, the running session and the work that
/// follows it.
///
/// Made once, by the root view, and alive as long as the window. Everything here belongs to the main thread,
/// and every task that it starts runs there and gives way at its waits. Entries are found by `id` at each
/// operation; where a position is remembered across a wait, the place says so.
///
/// `selectedRecording` is a copy and no reference into the list: the operations copy the entry again at the
/// points that their descriptions name, and until then the copy may be older than the list.
class RecorderViewModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(double recordingDuration READ recordingDuration NOTIFY recordingDurationChanged)
    Q_PROPERTY(QString formattedDuration READ formattedDuration NOTIFY recordingDurationChanged)
    Q_PROPERTY(float audioLevel READ audioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(QList<float> audioLevels READ audioLevels NOTIFY audioLevelsChanged)
    Q_PROPERTY(QString errorMessage READ errorMessageText NOTIFY errorMessageChanged)
    Q_PROPERTY(bool showError READ showError WRITE setShowError NOTIFY showErrorChanged)
    Q_PROPERTY(bool isProcessing READ isProcessing NOTIFY isProcessingChanged)
    Q_PROPERTY(QString processingStatus READ processingStatus NOTIFY processingStatusChanged)
    Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY selectedRecordingChanged)
    Q_PROPERTY(talvenor::AudioCaptureService *audioCaptureService READ audioCaptureServicePointer CONSTANT)

public:
    /// Loads the list, so that it is there before the first screen draws.
    explicit RecorderViewModel(QObject *parent = nullptr);
    ~RecorderViewModel() override;
    Q_DISABLE_COPY_MOVE(RecorderViewModel)

    /// All recordings, newest first.
    [[nodiscard]] const QList<Recording> &recordings() const { return m_recordings; }
    /// The copy that the detail screen shows.
    [[nodiscard]] const std::optional<Recording> &selectedRecording() const { return m_selectedRecording; }
    void setSelectedRecording(std::optional<Recording> recording);
    [[nodiscard]] bool hasSelection() const { return m_selectedRecording.has_value(); }
    /// Capture is running.
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    /// Seconds of the running session, or of the last one, counted by the timer.
    [[nodiscard]] double recordingDuration() const { return m_recordingDuration; }
    /// `recordingDuration` as a recording shows its own.
    [[nodiscard]] QString formattedDuration() const { return formatDuration(m_recordingDuration); }
    /// The newest level, 0 to 1, as the capture service has published it.
    [[nodiscard]] float audioLevel() const { return m_audioLevel; }
    /// Recent levels, oldest first, as the capture service has published them.
    [[nodiscard]] const QList<float> &audioLevels() const { return m_audioLevels; }
    /// The text of the newest error; it outlives its alert.
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    /// The error alert is up.
    [[nodiscard]] bool showError() const { return m_showError; }
    void setShowError(bool show);
    /// A transcription or a summary is in progress. Display state: nothing is refused because of it.
    [[nodiscard]] bool isProcessing() const { return m_isProcessing; }
    /// What is being processed, for display.
    [[nodiscard]] const QString &processingStatus() const { return m_processingStatus; }

    [[nodiscard]] AudioCaptureService &audioCaptureService() { return *m_audioCaptureService; }
    [[nodiscard]] TranscriptionService &transcriptionService() { return *m_transcriptionService; }
    [[nodiscard]] SummarizationService &summarizationService() { return *m_summarizationService; }

    // The session: RecorderViewModelSession.cpp

    /// Replaces the list from storage, newest first.
    void loadRecordings();
    /// The record button: stops a running session, else starts one.
    Q_INVOKABLE void toggleRecording();
    /// Creates, selects and saves an entry, then starts capture as a task. Only the plan may refuse; a
    /// failure of capture takes the entry out again and shows the alert.
    void startRecording();
    /// Ends capture and writes the entry as completed; logs the usage and starts the transcription if the
    /// settings say so. Returns at once.
    void stopRecording();

    // Transcription and summary: RecorderViewModelProcessing.cpp

    /// Transcribes the recording and, if settings and plan allow, goes on to its summary. `recording` is a
    /// copy, of which the id and the file name are used. The entry's position is kept across the waits. Never
    /// fails: failures become status and alert.
    Task<> transcribeRecording(Recording recording);
    /// Has the recording summarised and merges the participants found. The transcript is that of the
    /// argument, which may be older than the list. As above otherwise.
    Task<> summarizeRecording(Recording recording);

    // Edits and export: RecorderViewModelEdits.cpp. `recording` is the copy that a screen holds; where no
    // entry has its id any more, nothing happens.

    /// Removes the recording with its audio file, without asking.
    void deleteRecording(const Recording &recording);
    /// Takes any title as it is given, an empty one too.
    void renameRecording(const Recording &recording, const QString &title);
    void addParticipant(const Recording &recording, const QString &name, bool isAI = false);
    void removeParticipant(const Recording &recording, const QUuid &participantId);
    void updateParticipant(const Recording &recording, const QUuid &participantId, const QString &name);
    /// Asks for a file and writes the copy `recording` to it as Markdown, if the plan allows.
    void exportRecording(const Recording &recording);

Q_SIGNALS:
    void recordingsChanged();
    void selectedRecordingChanged();
    void isRecordingChanged();
    void recordingDurationChanged();
    void audioLevelChanged();
    void audioLevelsChanged();
    void errorMessageChanged();
    void showErrorChanged();
    void isProcessingChanged();
    void processingStatusChanged();

private:
    void setupBindings();
    void startTimer();
    void stopTimer();
    [[nodiscard]] static QString generateTitle();
    void showError(const QString &message);
    [[nodiscard]] Task<> captureNewEntry(QUuid id, QString url);
    [[nodiscard]] Task<> logUsage(qsizetype index);

    [[nodiscard]] QString errorMessageText() const { return m_errorMessage.value_or(QString()); }
    [[nodiscard]] AudioCaptureService *audioCaptureServicePointer() { return m_audioCaptureService.get(); }
    [[nodiscard]] std::optional<qsizetype> indexOf(const QUuid &id) const;
    /// The entry at a position that was remembered; a position beyond the end ends the process.
    [[nodiscard]] Recording &entryAt(qsizetype index);
    void setStatusAndSave(qsizetype index, RecordingStatus status);
    /// How a transcription or a summary ends that has failed: told, marked, no longer in progress.
    void failProcessing(qsizetype index, const std::exception_ptr &failure);
    void refreshSelection(const QUuid &id, qsizetype index);
    void saveEntryChange(const QUuid &id, qsizetype index);
    void setIsRecording(bool recording);
    void setRecordingDuration(double seconds);
    void setIsProcessing(bool processing);
    void setProcessingStatus(const QString &status);

    QList<Recording> m_recordings;
    std::optional<Recording> m_selectedRecording;
    bool m_isRecording = false;
    double m_recordingDuration = 0;
    float m_audioLevel = 0;
    QList<float> m_audioLevels;
    std::optional<QString> m_errorMessage;
    bool m_showError = false;
    bool m_isProcessing = false;
    QString m_processingStatus;

    std::unique_ptr<AudioCaptureService> m_audioCaptureService;
    std::unique_ptr<TranscriptionService> m_transcriptionService;
    std::unique_ptr<SummarizationService> m_summarizationService;
    StorageService &m_storageService;
    AppSettings &m_settings;
    AuthService &m_auth;
    APIService &m_api;

    std::unique_ptr<QTimer> m_timer;
    std::optional<QUuid>
        m_currentRecordingId; ///< the entry of the running session, or of a start that has failed
};

} // namespace talvenor
