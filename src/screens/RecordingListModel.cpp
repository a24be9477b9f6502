#include "screens/RecordingListModel.h"

#include "screens/RecordingStatusText.h"
#include "settings/AppSettings.h"
#include "settings/L10n.h"

#include <QHash>
#include <QStringMatcher>

#include <algorithm>
#include <utility>

namespace talvenor {

namespace {

/// Line breaks and control characters as spaces, for a text that is shown in one line.
QString inOneLine(const QString &text)
{
    const auto breaksLine = [](QChar character) {
        const QChar::Category category = character.category();
        return category == QChar::Other_Control || category == QChar::Separator_Line ||
               category == QChar::Separator_Paragraph;
    };
    if (std::none_of(text.cbegin(), text.cend(), breaksLine))
        return text;
    QString line = text;
    std::replace_if(line.begin(), line.end(), breaksLine, u' ');
    return line;
}

/// The beginning of a text, never ending within a character.
QString beginningOf(const QString &text, qsizetype longest)
{
    if (text.size() <= longest)
        return text;
    const qsizetype end = text.at(longest - 1).isHighSurrogate() ? longest - 1 : longest;
    return text.first(end) + u'…';
}

} // namespace

/// What the list needs of one recording, as long as it looks the same.
struct RecordingListModel::Entry
{
    explicit Entry(const Recording &recording)
        : id(recording.id), title(recording.title), date(recording.date), duration(recording.duration),
          status(recording.status), hasTranscript(!recording.transcriptSegments.isEmpty()),
          hasSummary(recording.summary.has_value()), spokenTitle(inOneLine(title)),
          shownTitle(beginningOf(spokenTitle, longestShownTitle))
    {
    }

    /// Whether the row of this recording would be the same; the transcript is compared by its being there.
    [[nodiscard]] bool shows(const Recording &recording) const
    {
        return recording.id == id && recording.status == status && recording.duration == duration &&
               recording.transcriptSegments.isEmpty() != hasTranscript &&
               recording.summary.has_value() == hasSummary && recording.date == date &&
               recording.title == title;
    }

    [[nodiscard]] const QString &foldedTitle(const CaseFolding &folding) const
    {
        if (folded.isNull())
            folded = title.isEmpty() ? QStringLiteral("") : folding.folded(title);
        return folded;
    }

    [[nodiscard]] const QString &formattedDate() const
    {
        if (dateText.isNull()) {
            Recording recording;
            recording.date = date;
            dateText = recording.formattedDate();
        }
        return dateText;
    }

    QUuid id;
    QString title;
    QDateTime date;
    double duration;
    RecordingStatus status;
    bool hasTranscript;
    bool hasSummary;
    QString spokenTitle;
    QString shownTitle;

private:
    mutable QString folded;   ///< null until it is asked for
    mutable QString dateText; ///< likewise
};

RecordingListModel::RecordingListModel(RecorderViewModel &viewModel, QObject *parent)
    : KeyedListModel(parent), m_viewModel(viewModel), m_language(L10n::current())
{
    connect(&viewModel, &RecorderViewModel::recordingsChanged, this, &RecordingListModel::refresh);
    connect(&viewModel, &RecorderViewModel::selectedRecordingChanged, this,
            &RecordingListModel::refreshSelection);
    connect(&AppSettings::shared(), &AppSettings::changed, this, &RecordingListModel::refreshLanguage);
    connect(&m_idle, &QTimer::timeout, this, &RecordingListModel::foldSomeTitles);
    refresh();
    refreshSelection();
}

RecordingListModel::~RecordingListModel() = default;

int RecordingListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QHash<int, QByteArray> RecordingListModel::roleNames() const
{
    return {{idRole, "recordingId"},
            {titleRole, "title"},
            {nameRole, "spokenName"},
            {dateRole, "formattedDate"},
            {durationRole, "formattedDuration"},
            {statusRole, "statusForm"},
            {statusTextRole, "statusText"},
            {symbolRole, "statusSymbol"},
            {symbolColorRole, "statusColor"},
            {selectedRole, "isSelected"}};
}

QVariant RecordingListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Entry &entry = *m_rows.at(index.row());
    switch (role) {
    case idRole:
        return entry.id.toString();
    case titleRole:
        return entry.shownTitle;
    case nameRole:
        // A title without any character to speak is spoken like the one that a stop gives in its place.
        return entry.spokenTitle.trimmed().isEmpty() ? L10n::meetingTitle(entry.formattedDate())
                                                     : entry.spokenTitle;
    case dateRole:
        return entry.formattedDate();
    case durationRole:
        return formatDuration(entry.duration);
    case statusRole:
        return stringForm(entry.status);
    case statusTextRole:
        return statusText(entry.status);
    case symbolRole:
        return statusMark(entry.status, entry.hasTranscript, entry.hasSummary).symbol;
    case symbolColorRole:
        return statusMark(entry.status, entry.hasTranscript, entry.hasSummary).color;
    case selectedRole:
        return entry.id == m_selectedId;
    default:
        return {};
    }
}

void RecordingListModel::setSearchText(const QString &text)
{
    if (m_searchText == text)
        return;
    const QString folded = m_folding.folded(text);
    // What holds the longer text is among what holds a part of it.
    const bool isNarrower = folded.contains(m_foldedText);
    m_searchText = text;
    m_foldedText = folded;
    Q_EMIT searchTextChanged();
    showRows(filtered(isNarrower ? m_rows : m_entries));
}

int RecordingListModel::selectedRow() const
{
    if (m_selectedId.isNull())
        return -1;
    for (int row = 0; row < rowCount(); ++row) {
        if (m_rows.at(row)->id == m_selectedId)
            return row;
    }
    return -1;
}

void RecordingListModel::refresh()
{
    m_entries = currentEntries();
    m_foldedCount = 0;
    m_idle.start(0);
    showRows(filtered(m_entries));
}

RecordingListModel::Entries RecordingListModel::currentEntries() const
{
    const QList<Recording> &recordings = m_viewModel.recordings();
    Entries entries;
    entries.reserve(recordings.size());
    QHash<QUuid, qsizetype> places; // made once an entry is not where the one before lets expect it
    qsizetype expected = 0;
    for (const Recording &recording : recordings) {
        qsizetype at = expected;
        if (at >= m_entries.size() || m_entries.at(at)->id != recording.id) {
            for (qsizetype i = places.isEmpty() ? 0 : m_entries.size(); i < m_entries.size(); ++i)
                places.insert(m_entries.at(i)->id, i);
            at = places.value(recording.id, -1);
        }
        if (at >= 0)
            expected = at + 1;
        if (at >= 0 && m_entries.at(at)->shows(recording))
            entries.append(m_entries.at(at));
        else
            entries.append(std::make_shared<const Entry>(recording));
    }
    return entries;
}

RecordingListModel::Entries RecordingListModel::filtered(const Entries &entries) const
{
    if (m_foldedText.isEmpty())
        return entries;
    const QStringMatcher matcher(m_foldedText);
    Entries found;
    for (const std::shared_ptr<const Entry> &entry : entries) {
        if (matcher.indexIn(entry->foldedTitle(m_folding)) >= 0)
            found.append(entry);
    }
    return found;
}

void RecordingListModel::foldSomeTitles()
{
    // As many as take no time that anybody could notice.
    const qsizetype end = std::min(m_foldedCount + 200, m_entries.size());
    for (; m_foldedCount < end; ++m_foldedCount)
        (void)m_entries.at(m_foldedCount)->foldedTitle(m_folding);
    if (m_foldedCount == m_entries.size())
        m_idle.stop();
}

void RecordingListModel::showRows(const Entries &next)
{
    const int selectedBefore = selectedRow();
    const int currentBefore = currentRow();
    const QUuid currentIdBefore = m_currentId;
    replaceRows(
        m_rows, next, [](const auto &entry) { return entry->id; },
        [](const auto &a, const auto &b) { return a == b; });
    if (!m_current.isValid() && !m_currentId.isNull()) {
        const auto isCurrent = [this](const auto &entry) { return entry->id == m_currentId; };
        const auto found = std::find_if(m_rows.cbegin(), m_rows.cend(), isCurrent);
        if (found != m_rows.cend())
            m_current = index(static_cast<int>(found - m_rows.cbegin()));
        else if (std::none_of(m_entries.cbegin(), m_entries.cend(), isCurrent)) {
            // Whoever deletes one after the other stays where they are.
            m_current = index(std::min(currentBefore, rowCount() - 1));
            m_currentId = m_current.isValid() ? m_rows.at(m_current.row())->id : QUuid();
        }
    }
    if (selectedRow() != selectedBefore)
        Q_EMIT selectedRowChanged();
    // The row of another recording, which may have the same number, has yet to learn that it is the current
    // one.
    if (currentRow() != currentBefore || m_currentId != currentIdBefore)
        Q_EMIT currentRowChanged();
}

void RecordingListModel::setCurrentRow(int row)
{
    const bool exists = row >= 0 && row < rowCount();
    if (currentRow() == (exists ? row : -1))
        return;
    m_current = exists ? index(row) : QModelIndex();
    m_currentId = exists ? m_rows.at(row)->id : QUuid();
    Q_EMIT currentRowChanged();
}

void RecordingListModel::refreshSelection()
{
    const std::optional<Recording> &recording = m_viewModel.selectedRecording();
    const QUuid selected = recording ? recording->id : QUuid();
    if (selected == m_selectedId)
        return;
    const QUuid before = std::exchange(m_selectedId, selected);
    for (qsizetype row = 0; row < m_rows.size(); ++row) {
        const QUuid &id = m_rows.at(row)->id;
        const QModelIndex changed = createIndex(int(row), 0);
        if (id == before || id == selected)
            Q_EMIT dataChanged(changed, changed, {selectedRole});
    }
    Q_EMIT selectedRowChanged();
}

void RecordingListModel::refreshLanguage()
{
    // Most changes are of other settings.
    if (m_language == L10n::current())
        return;
    m_language = L10n::current();
    if (!m_rows.isEmpty())
        Q_EMIT dataChanged(index(0), index(rowCount() - 1), {nameRole, statusTextRole});
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
    if (row < 0 || row >= rowCount())
        return;
    const Entry &entry = *m_rows.at(row);
    const QList<Recording> &recordings = m_viewModel.recordings();
    // Ids may repeat in a file that was not written here; the row's recording is then the one that looks like
    // it.
    const auto isRows = [&entry](const Recording &recording) { return entry.shows(recording); };
    const auto found = std::find_if(recordings.cbegin(), recordings.cend(), isRows);
    if (found != recordings.cend())
        m_viewModel.setSelectedRecording(*found);
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
