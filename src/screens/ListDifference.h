#pragma once

#include <QList>
#include <QUuid>

namespace talvenor {

/// One step on the way from one list to another. Positions are those of the list at the time of the step.
struct ListChange
{
    enum class Kind { insert = 1, remove, move };

    Kind kind = Kind::insert;
    qsizetype first = 0;
    qsizetype count = 0;       ///< always 1 for a move
    qsizetype destination = 0; ///< of a move: the position at which the element stands afterwards

    friend bool operator==(const ListChange &, const ListChange &) = default;
};

/// The steps that turn a list with the keys `before` into one with the keys `after`, neighbours joined.
///
/// Keys may repeat: the n-th of one side corresponds to the n-th of the other. The number of steps is that of
/// separate places of change; the time is linear for lists of which elements come and go.
[[nodiscard]] QList<ListChange> listDifference(const QList<QUuid> &before, const QList<QUuid> &after);

} // namespace talvenor
