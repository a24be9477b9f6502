#include "screens/SelectedRecording.h"

#include "screens/RecordingStatusText.h"
#include "settings/AppSettings.h"

namespace talvenor {

namespace {

/// `text` without the spaces and tabs at its ends; line breaks stay.
QString withoutOuterWhitespaces(const QString &text)
{
    const auto isWhitespace = [](QChar character) {
        return character == u'\t' || character.category() == QChar::Separator_Space;
    };
    qsizetype first = 0;
    qsizetype end = text.size();
    while (first < end && isWhitespace(text.at(first)))
        ++first;
    while (end > first && isWhitespace(text.at(end - 1)))
        --end;
    return text.mid(first, end - first);
}

} // namespace

SelectedRecording::SelectedRecording(RecorderViewModel &viewModel, QObject *parent)
    : QObject(parent), m_viewModel(viewModel)
{
    connect(&viewModel, &RecorderViewModel::selectedRecordingChanged, this, &SelectedRecording::refresh);
    // The status has another name in another language.
    connect(&AppSettings::shared(), &AppSettings::changed, this, &SelectedRecording::changed);
    refresh();
}

void SelectedRecording::refresh()
{
    const std::optional<Recording> &selected = m_viewModel.selectedRecording();
    if (!selected)
        return;
    const bool isAnother = selected->id != m_recording.id;
    m_recording = *selected;
    m_transcript.setSegments(m_recording.transcriptSegments);
    m_participants.setParticipants(m_recording.participants);
    if (isAnother)
        Q_EMIT recordingIdChanged();
    Q_EMIT changed();
}

QString SelectedRecording::statusLabel() const
{
    return statusText(m_recording.status);
}

bool SelectedRecording::canTranscribe() const
{
    return offersTranscription(m_recording);
}

bool SelectedRecording::canSummarize() const
{
    return offersSummary(m_recording);
}

void SelectedRecording::rename(const QString &title)
{
    m_viewModel.renameRecording(m_recording, title);
}

void SelectedRecording::transcribe()
{
    startTask(&m_viewModel, [viewModel = &m_viewModel, copy = m_recording] {
        return viewModel->transcribeRecording(copy);
    });
}

void SelectedRecording::summarize()
{
    startTask(&m_viewModel,
              [viewModel = &m_viewModel, copy = m_recording] { return viewModel->summarizeRecording(copy); });
}

void SelectedRecording::exportRecording()
{
    m_viewModel.exportRecording(m_recording);
}

bool SelectedRecording::isParticipantName(const QString &name)
{
    return !withoutOuterWhitespaces(name).isEmpty();
}

bool SelectedRecording::addParticipant(const QString &name)
{
    const QString trimmed = withoutOuterWhitespaces(name);
    if (trimmed.isEmpty())
        return false;
    m_viewModel.addParticipant(m_recording, trimmed);
    return true;
}

void SelectedRecording::updateParticipant(const QString &participantId, const QString &name)
{
    m_viewModel.updateParticipant(m_recording, QUuid(participantId), name);
}

void SelectedRecording::removeParticipant(const QString &participantId)
{
    m_viewModel.removeParticipant(m_recording, QUuid(participantId));
}

} // namespace talvenor
