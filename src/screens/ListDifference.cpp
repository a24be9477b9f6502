#include "screens/ListDifference.h"

#include <QHash>
#include <QPair>
#include <QSet>

#include <optional>
#include <span>

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

using Ids = std::span<const QUuid>;

/// The runs of `longer` that are not in `shorter`, in their order; absent if `shorter` has anything else, or
/// in another order.
std::optional<QList<ListChange>> extraRuns(Ids longer, Ids shorter)
{
    QList<ListChange> runs;
    std::size_t found = 0;
    for (std::size_t at = 0; at < longer.size(); ++at) {
        if (found < shorter.size() && longer[at] == shorter[found]) {
            ++found;
            continue;
        }
        const auto place = static_cast<qsizetype>(at);
        if (!runs.isEmpty() && runs.last().first + runs.last().count == place)
            ++runs.last().count;
        else
            runs.append({ListChange::Kind::insert, place, 1, 0});
    }
    if (found < shorter.size())
        return std::nullopt;
    return runs;
}

/// The steps between any two lists.
QList<ListChange> differenceByKeys(const QList<QUuid> &before, const QList<QUuid> &after)
{
    QList<ListChange> changes;
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

} // namespace

QList<ListChange> listDifference(const QList<QUuid> &before, const QList<QUuid> &after)
{
    const Ids old(before.constData(), static_cast<std::size_t>(before.size()));
    const Ids target(after.constData(), static_cast<std::size_t>(after.size()));
    const std::size_t shortest = std::min(old.size(), target.size());
    std::size_t same = 0; // from the beginning
    while (same < shortest && old[same] == target[same])
        ++same;
    std::size_t sameEnd = 0;
    while (sameEnd < shortest - same && old[old.size() - 1 - sameEnd] == target[target.size() - 1 - sameEnd])
        ++sameEnd;
    const Ids oldMiddle = old.subspan(same, old.size() - same - sameEnd);
    const Ids targetMiddle = target.subspan(same, target.size() - same - sameEnd);

    // A filter that becomes narrower or wider, and nearly every change of a list, is of these two kinds;
    // neither needs a table of the keys.
    QList<ListChange> changes;
    if (auto inserted = extraRuns(targetMiddle, oldMiddle)) {
        changes = std::move(*inserted);
    } else if (auto removed = extraRuns(oldMiddle, targetMiddle)) {
        changes = std::move(*removed);
        // From the end, so that positions before a removal stay valid.
        std::reverse(changes.begin(), changes.end());
        for (ListChange &change : changes)
            change.kind = ListChange::Kind::remove;
    } else {
        changes = differenceByKeys({oldMiddle.begin(), oldMiddle.end()},
                                   {targetMiddle.begin(), targetMiddle.end()});
    }
    for (ListChange &change : changes) {
        change.first += static_cast<qsizetype>(same);
        change.destination += change.kind == ListChange::Kind::move ? static_cast<qsizetype>(same) : 0;
    }
    return changes;
}

} // namespace talvenor
