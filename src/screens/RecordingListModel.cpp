#include "screens/RecordingListModel.h"

#include "screens/RecordingStatusText.h"
#include "settings/AppSettings.h"

#include <QLocale>

namespace talvenor {

namespace {

/// Whether two states of one recording look the same in a row; the transcript is compared by its being there.
bool looksSame(const Recording &a, const Recording &b)
{
    return a.title == b.title && a.date == b.date && a.duration == b.duration && a.status == b.status &&
           a.transcriptSegments.isEmpty() == b.transcriptSegments.isEmpty() &&
           a.summary.has_value() == b.summary.has_value();
}

/// Case folded by the rules of the system's locale, in which a Turkish I is another letter.
QString folded(const QString &text)
{
    return QLocale::system().toLower(QLocale::system().toUpper(text));
}

} // namespace

RecordingListModel::RecordingListModel(RecorderViewModel &viewModel, QObject *parent)
    : KeyedListModel(parent), m_viewModel(viewModel)
{
    connect(&viewModel, &RecorderViewModel::recordingsChanged, this, &RecordingListModel::refresh);
    connect(&viewModel, &RecorderViewModel::selectedRecordingChanged, this,
            &RecordingListModel::refreshSelection);
    connect(&AppSettings::shared(), &AppSettings::changed, this, [this] {
        if (!m_rows.isEmpty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1), {statusTextRole});
    });
    refresh();
    refreshSelection();
}

int RecordingListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QHash<int, QByteArray> RecordingListModel::roleNames() const
{
    return {{idRole, "recordingId"},     {titleRole, "title"},
            {dateRole, "formattedDate"}, {durationRole, "formattedDuration"},
            {statusRole, "statusForm"},  {statusTextRole, "statusText"},
            {selectedRole, "isSelected"}};
}

QVariant RecordingListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Recording &recording = m_rows.at(index.row());
    switch (role) {
    case idRole:
        return recording.id.toString();
    case titleRole:
        return recording.title;
    case dateRole:
        return recording.formattedDate();
    case durationRole:
        return recording.formattedDuration();
    case statusRole:
        return stringForm(recording.status);
    case statusTextRole:
        return statusText(recording.status);
    case selectedRole:
        return recording.id == m_selectedId;
    default:
        return {};
    }
}

void RecordingListModel::setSearchText(const QString &text)
{
    if (m_searchText == text)
        return;
    m_searchText = text;
    Q_EMIT searchTextChanged();
    refresh();
}

int RecordingListModel::selectedRow() const
{
    if (m_selectedId.isNull())
        return -1;
    for (int row = 0; row < rowCount(); ++row) {
        if (m_rows.at(row).id == m_selectedId)
            return row;
    }
    return -1;
}

void RecordingListModel::refresh()
{
    const int selectedBefore = selectedRow();
    QList<Recording> next;
    if (m_searchText.isEmpty()) {
        next = m_viewModel.recordings();
    } else {
        const QString wanted = folded(m_searchText);
        for (const Recording &recording : m_viewModel.recordings()) {
            if (folded(recording.title).contains(wanted))
                next.append(recording);
        }
    }
    replaceRows(
        m_rows, next, [](const Recording &recording) { return recording.id; }, looksSame);
    if (selectedRow() != selectedBefore)
        Q_EMIT selectedRowChanged();
}

void RecordingListModel::refreshSelection()
{
    const QUuid selected = m_viewModel.selectedRecording() ? m_viewModel.selectedRecording()->id : QUuid();
    if (selected == m_selectedId)
        return;
    const int before = selectedRow();
    m_selectedId = selected;
    const int after = selectedRow();
    for (const int row : {before, after}) {
        if (row >= 0)
            Q_EMIT dataChanged(index(row), index(row), {selectedRole});
    }
    Q_EMIT selectedRowChanged();
}

std::optional<Recording> RecordingListModel::recordingWithId(const QString &id) const
{
    // Compared as texts: read as an id, a text that is none would become the null id, which an entry may
    // have.
    for (const Recording &recording : m_viewModel.recordings()) {
        if (recording.id.toString() == id)
            return recording;
    }
    return std::nullopt;
}

void RecordingListModel::select(int row)
{
    if (row >= 0 && row < rowCount())
        m_viewModel.setSelectedRecording(m_rows.at(row));
}

bool RecordingListModel::canTranscribe(const QString &id) const
{
    const auto recording = recordingWithId(id);
    return recording && offersTranscription(*recording);
}

bool RecordingListModel::canSummarize(const QString &id) const
{
    const auto recording = recordingWithId(id);
    return recording && offersSummary(*recording);
}

void RecordingListModel::transcribe(const QString &id)
{
    if (const auto recording = recordingWithId(id)) {
        startTask(&m_viewModel, [viewModel = &m_viewModel, copy = *recording] {
            return viewModel->transcribeRecording(copy);
        });
    }
}

void RecordingListModel::summarize(const QString &id)
{
    if (const auto recording = recordingWithId(id)) {
        startTask(&m_viewModel, [viewModel = &m_viewModel, copy = *recording] {
            return viewModel->summarizeRecording(copy);
        });
    }
}

void RecordingListModel::exportRecording(const QString &id)
{
    if (const auto recording = recordingWithId(id))
        m_viewModel.exportRecording(*recording);
}

void RecordingListModel::deleteRecording(const QString &id)
{
    if (const auto recording = recordingWithId(id))
        m_viewModel.deleteRecording(*recording);
}

} // namespace talvenor
