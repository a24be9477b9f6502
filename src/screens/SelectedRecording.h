#pragma once

#include "recorder/RecorderViewModel.h"
#include "screens/ParticipantModel.h"
#include "screens/TranscriptModel.h"

#include <QtQml/qqmlregistration.h>

#include <optional>

namespace talvenor {

/// What the detail screen shows: the view model's selected copy, which may be older than its list.
///
/// Without a selection the last one stays, and nothing can be done with it. Main thread.
class SelectedRecording : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")
    Q_PROPERTY(QString recordingId READ recordingId NOTIFY recordingIdChanged)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString formattedDate READ formattedDate NOTIFY changed)
    Q_PROPERTY(QString formattedDuration READ formattedDuration NOTIFY changed)
    Q_PROPERTY(QString statusForm READ statusForm NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusLabel NOTIFY changed)
    Q_PROPERTY(bool canTranscribe READ canTranscribe NOTIFY changed)
    Q_PROPERTY(bool canSummarize READ canSummarize NOTIFY changed)
    Q_PROPERTY(bool hasSummary READ hasSummary NOTIFY changed)
    Q_PROPERTY(QString summary READ summary NOTIFY changed)
    Q_PROPERTY(talvenor::TranscriptModel *transcript READ transcript CONSTANT)
    Q_PROPERTY(talvenor::ParticipantModel *participants READ participants CONSTANT)

public:
    /// `viewModel` outlives this object.
    explicit SelectedRecording(RecorderViewModel &viewModel, QObject *parent = nullptr);

    [[nodiscard]] QString recordingId() const { return m_recording.id.toString(); }
    [[nodiscard]] const QString &title() const { return m_recording.title; }
    [[nodiscard]] QString formattedDate() const { return m_recording.formattedDate(); }
    [[nodiscard]] QString formattedDuration() const { return m_recording.formattedDuration(); }
    /// The status as it stands in the file, to choose a colour by.
    [[nodiscard]] QString statusForm() const { return stringForm(m_recording.status); }
    /// The status in the language of the application.
    [[nodiscard]] QString statusLabel() const;
    [[nodiscard]] bool canTranscribe() const;
    [[nodiscard]] bool canSummarize() const;
    /// False only where there is no summary; an empty one is one.
    [[nodiscard]] bool hasSummary() const { return m_recording.summary.has_value(); }
    [[nodiscard]] QString summary() const { return m_recording.summary.value_or(QString()); }
    [[nodiscard]] TranscriptModel *transcript() { return &m_transcript; }
    [[nodiscard]] ParticipantModel *participants() { return &m_participants; }

    // The operations hand the copy shown to the view model.

    /// Takes any title as it is.
    Q_INVOKABLE void rename(const QString &title);
    Q_INVOKABLE void transcribe();
    Q_INVOKABLE void summarize();
    Q_INVOKABLE void exportRecording();
    /// Adds the name without the spaces and tabs around it; nothing happens if nothing is left. True if
    /// added.
    Q_INVOKABLE bool addParticipant(const QString &name);
    /// Whether `addParticipant` would add this.
    Q_INVOKABLE static bool isParticipantName(const QString &name);
    /// Takes the name as it was typed.
    Q_INVOKABLE void updateParticipant(const QString &participantId, const QString &name);
    /// Removes without asking.
    Q_INVOKABLE void removeParticipant(const QString &participantId);

Q_SIGNALS:
    void changed();
    void recordingIdChanged();

private:
    void refresh();

    RecorderViewModel &m_viewModel;
    Recording m_recording;
    TranscriptModel m_transcript;
    ParticipantModel m_participants;
};

} // namespace talvenor
