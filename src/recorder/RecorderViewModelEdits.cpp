// What the user changes in a stored recording. Each operation finds the entry by its id, changes it there,
// saves the whole list and copies the entry again if it is the selected one.

#include "recorder/RecorderViewModel.h"

#include "platform/Platform.h"
#include "service/AuthService.h"
#include "settings/L10n.h"
#include "store/StorageService.h"

#include <algorithm>

namespace talvenor {

namespace {

// Off the main thread, since the target may be a slow drive.
Task<> writeExport(StorageService &storage, Recording recording, QString url)
{
    try {
        auto write = [&storage, recording, url] { storage.exportTranscript(recording, url); };
        co_await onGeneralPool(std::move(write));
    } catch (const std::exception &) {
        // Dropped without a message: the panel has already warned of what it could see.
    }
}

} // namespace

void RecorderViewModel::refreshSelection(const QUuid &id, qsizetype index)
{
    if (m_selectedRecording && m_selectedRecording->id == id)
        setSelectedRecording(entryAt(index));
}

void RecorderViewModel::saveEntryChange(const QUuid &id, qsizetype index)
{
    Q_EMIT recordingsChanged();
    m_storageService.saveRecordings(m_recordings);
    refreshSelection(id, index);
}

void RecorderViewModel::deleteRecording(const Recording &recording)
{
    // A copy: the argument may be the very entry, or the selection, that goes.
    const Recording doomed = recording;
    m_storageService.deleteRecording(doomed, m_recordings);
    Q_EMIT recordingsChanged();
    if (m_selectedRecording && m_selectedRecording->id == doomed.id)
        setSelectedRecording(std::nullopt);
}

void RecorderViewModel::renameRecording(const Recording &recording, const QString &title)
{
    const QUuid id = recording.id;
    const std::optional<qsizetype> index = indexOf(id);
    if (!index)
        return;
    m_recordings[*index].title = title;
    saveEntryChange(id, *index);
}

void RecorderViewModel::addParticipant(const Recording &recording, const QString &name, bool isAI)
{
    const QUuid id = recording.id;
    const std::optional<qsizetype> index = indexOf(id);
    if (!index)
        return;
    m_recordings[*index].participants.append({QUuid::createUuid(), name, isAI});
    saveEntryChange(id, *index);
}

void RecorderViewModel::removeParticipant(const Recording &recording, const QUuid &participantId)
{
    const QUuid id = recording.id;
    const std::optional<qsizetype> index = indexOf(id);
    if (!index)
        return;
    m_recordings[*index].participants.removeIf(
        [target = participantId](const Participant &participant) { return participant.id == target; });
    saveEntryChange(id, *index);
}

void RecorderViewModel::updateParticipant(const Recording &recording, const QUuid &participantId,
                                          const QString &name)
{
    const QUuid id = recording.id;
    const std::optional<qsizetype> index = indexOf(id);
    if (!index)
        return;
    QList<Participant> &participants = m_recordings[*index].participants;
    const auto participant =
        std::find_if(participants.begin(), participants.end(),
                     [&participantId](const Participant &p) { return p.id == participantId; });
    if (participant == participants.end())
        return;
    participant->name = name;
    saveEntryChange(id, *index);
}

void RecorderViewModel::exportRecording(const Recording &recording)
{
    if (!m_auth.canExport()) {
        showError(L10n::isGerman() ? QStringLiteral("Export ist eine Premium-Funktion.")
                                   : QStringLiteral("Export is a premium feature."));
        return;
    }
    SavePanelRequest request;
    request.allowedContentTypes = {ContentType::plainText};
    request.nameFieldStringValue = recording.title + QStringLiteral(".md");
    const QPointer<RecorderViewModel> self(this);
    Platform::shared().filePanels->beginSavePanel(
        request, [self, recording](PanelResponse response, const std::optional<QString> &path) {
            if (response != PanelResponse::ok || !path || !self)
                return;
            startTask(self, [&storage = self->m_storageService, recording, url = *path]() {
                return writeExport(storage, recording, url);
            });
        });
}

} // namespace talvenor
