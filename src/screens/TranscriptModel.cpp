#include "screens/TranscriptModel.h"

namespace talvenor {

int TranscriptModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_segments.size());
}

QHash<int, QByteArray> TranscriptModel::roleNames() const
{
    return {{timestampRole, "timestamp"}, {textRole, "text"}, {speakerRole, "speaker"}};
}

QVariant TranscriptModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const TranscriptSegment &segment = m_segments.at(index.row());
    switch (role) {
    case timestampRole:
        return segment.formattedTimestamp();
    case textRole:
        return segment.text;
    case speakerRole:
        return segment.speaker.value_or(QString());
    default:
        return {};
    }
}

void TranscriptModel::setSegments(const QList<TranscriptSegment> &segments)
{
    replaceRows(
        m_segments, segments, [](const TranscriptSegment &segment) { return segment.id; },
        [](const TranscriptSegment &a, const TranscriptSegment &b) {
            return a.timestamp == b.timestamp && a.text == b.text && a.speaker == b.speaker;
        });
}

} // namespace talvenor
