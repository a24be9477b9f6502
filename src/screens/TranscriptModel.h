#pragma once

#include "screens/KeyedListModel.h"
#include "store/Recording.h"

namespace talvenor {

/// The lines of the selected recording's transcript. Main thread.
class TranscriptModel : public KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")

public:
    enum Role { timestampRole = Qt::UserRole + 1, textRole, speakerRole };

    using KeyedListModel::KeyedListModel;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void setSegments(const QList<TranscriptSegment> &segments);

private:
    QList<TranscriptSegment> m_segments;
};

} // namespace talvenor
