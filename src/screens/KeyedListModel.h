#pragma once

#include "screens/ListDifference.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <algorithm>

namespace talvenor {

/// A list model whose rows have identities, and which therefore tells its views what exactly has changed.
class KeyedListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int count() const { return rowCount(); }

Q_SIGNALS:
    void countChanged();

protected:
    /// Above this number of separate places, a view is served faster by one removal and one insertion of all.
    static constexpr qsizetype kMostChanges = 64;

    /// Turns `rows` into `next`, announcing insertions, removals, moves and rows with other contents.
    /// `identity(row)` gives a QUuid, `isSame(a, b)` says whether two rows of one identity show the same.
    template<typename Row, typename Identity, typename IsSame>
    void replaceRows(QList<Row> &rows, const QList<Row> &next, Identity identity, IsSame isSame)
    {
        const qsizetype countBefore = rows.size();
        const auto keys = [&identity](const QList<Row> &list) {
            QList<QUuid> ids;
            ids.reserve(list.size());
            for (const Row &row : list)
                ids.append(identity(row));
            return ids;
        };
        const QList<ListChange> changes = listDifference(keys(rows), keys(next));
        if (changes.size() > kMostChanges) {
            replaceAll(rows, next);
        } else {
            for (const ListChange &change : changes)
                apply(rows, next, change);
            announceDifferences(rows, next, isSame);
        }
        if (rows.size() != countBefore)
            Q_EMIT countChanged();
    }

private:
    template<typename Row>
    void replaceAll(QList<Row> &rows, const QList<Row> &next)
    {
        if (!rows.isEmpty()) {
            beginRemoveRows({}, 0, static_cast<int>(rows.size()) - 1);
            rows.clear();
            endRemoveRows();
        }
        if (!next.isEmpty()) {
            beginInsertRows({}, 0, static_cast<int>(next.size()) - 1);
            rows = next;
            endInsertRows();
        }
    }

    template<typename Row>
    void apply(QList<Row> &rows, const QList<Row> &next, const ListChange &change)
    {
        const int first = static_cast<int>(change.first);
        const int last = static_cast<int>(change.first + change.count - 1);
        switch (change.kind) {
        case ListChange::Kind::insert:
            // Everything before an insertion is in place already, so positions are those of the new list.
            beginInsertRows({}, first, last);
            rows.insert(first, change.count, Row());
            std::copy(next.begin() + first, next.begin() + last + 1, rows.begin() + first);
            endInsertRows();
            break;
        case ListChange::Kind::remove:
            beginRemoveRows({}, first, last);
            rows.remove(first, change.count);
            endRemoveRows();
            break;
        case ListChange::Kind::move:
            // Elements only ever move towards the front.
            if (!beginMoveRows({}, first, first, {}, static_cast<int>(change.destination)))
                return;
            rows.move(first, change.destination);
            endMoveRows();
            break;
        }
    }

    template<typename Row, typename IsSame>
    void announceDifferences(QList<Row> &rows, const QList<Row> &next, IsSame isSame)
    {
        QList<int> different;
        for (int row = 0; row < static_cast<int>(next.size()); ++row) {
            if (!isSame(rows.at(row), next.at(row)))
                different.append(row);
        }
        rows = next; // also where nothing of the difference shows
        for (const int row : different)
            Q_EMIT dataChanged(index(row), index(row));
    }
};

} // namespace talvenor
