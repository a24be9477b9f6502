#include "screens/ListDifference.h"

#include <QHash>
#include <QPair>
#include <QSet>

namespace talvenor {

namespace {

using Key = QPair<QUuid, int>; ///< with the number of equal ones before it

QList<Key> numbered(const QList<QUuid> &ids)
{
    QHash<QUuid, int> seen;
    QList<Key> keys;
    seen.reserve(ids.size());
    keys.reserve(ids.size());
    for (const QUuid &id : ids)
        keys.append({id, seen[id]++});
    return keys;
}

} // namespace

QList<ListChange> listDifference(const QList<QUuid> &before, const QList<QUuid> &after)
{
    QList<ListChange> changes;
    if (before == after)
        return changes;
    const QList<Key> old = numbered(before);
    const QList<Key> target = numbered(after);
    const QSet<Key> wanted(target.cbegin(), target.cend());

    // From the end, so that positions before a removal stay valid.
    for (qsizetype end = old.size(); end > 0;) {
        qsizetype first = end;
        while (first > 0 && !wanted.contains(old.at(first - 1)))
            --first;
        if (first < end)
            changes.append({ListChange::Kind::remove, first, end - first, 0});
        end = first < end ? first : end - 1;
    }

    QList<Key> rest; // what is left of the old list, not yet in place
    for (const Key &key : old) {
        if (wanted.contains(key))
            rest.append(key);
    }
    const QSet<Key> kept(rest.cbegin(), rest.cend());
    QSet<Key> moved; // elements of `rest` that have been taken from their old place
    qsizetype next = 0;
    for (qsizetype at = 0; at < target.size(); ++at) {
        while (next < rest.size() && moved.contains(rest.at(next)))
            ++next;
        const Key &key = target.at(at);
        if (next < rest.size() && rest.at(next) == key) {
            ++next;
            continue;
        }
        if (kept.contains(key)) {
            qsizetype from = at;
            for (qsizetype i = next; rest.at(i) != key; ++i)
                from += moved.contains(rest.at(i)) ? 0 : 1;
            moved.insert(key);
            changes.append({ListChange::Kind::move, from, 1, at});
            continue;
        }
        if (!changes.isEmpty() && changes.last().kind == ListChange::Kind::insert &&
            changes.last().first + changes.last().count == at)
            ++changes.last().count;
        else
            changes.append({ListChange::Kind::insert, at, 1, 0});
    }
    return changes;
}

} // namespace talvenor
