#include "screens/ListDifference.h"

#include <QRandomGenerator>
#include <QTest>

using namespace talvenor;

namespace {

QUuid key(int number)
{
    return QUuid(static_cast<uint>(number), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
}

QList<QUuid> keys(const QList<int> &numbers)
{
    QList<QUuid> list;
    for (const int number : numbers)
        list.append(key(number));
    return list;
}

/// Does the steps as a view would follow them; inserted elements are looked up at their place in `after`.
QList<QUuid> applied(QList<QUuid> list, const QList<QUuid> &after, const QList<ListChange> &changes)
{
    for (const ListChange &change : changes) {
        switch (change.kind) {
        case ListChange::Kind::insert:
            for (qsizetype i = change.first; i < change.first + change.count; ++i)
                list.insert(i, after.at(i));
            break;
        case ListChange::Kind::remove:
            list.remove(change.first, change.count);
            break;
        case ListChange::Kind::move:
            list.move(change.first, change.destination);
            break;
        }
    }
    return list;
}

} // namespace

class ListDifferenceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void equalListsNeedNoSteps()
    {
        QVERIFY(listDifference(keys({1, 2, 3}), keys({1, 2, 3})).isEmpty());
        QVERIFY(listDifference({}, {}).isEmpty());
    }

    void aNewFirstElementIsOneInsertion()
    {
        QCOMPARE(listDifference(keys({1, 2}), keys({3, 1, 2})),
                 (QList<ListChange>{{ListChange::Kind::insert, 0, 1, 0}}));
    }

    void neighboursGoTogether()
    {
        QCOMPARE(listDifference(keys({1, 2, 3, 4, 5}), keys({1, 5})),
                 (QList<ListChange>{{ListChange::Kind::remove, 1, 3, 0}}));
        QCOMPARE(listDifference({}, keys({1, 2, 3})),
                 (QList<ListChange>{{ListChange::Kind::insert, 0, 3, 0}}));
        QCOMPARE(listDifference(keys({1, 2, 3}), {}),
                 (QList<ListChange>{{ListChange::Kind::remove, 0, 3, 0}}));
    }

    void anElementThatChangesItsPlaceIsMoved()
    {
        QCOMPARE(listDifference(keys({1, 2, 3}), keys({3, 1, 2})),
                 (QList<ListChange>{{ListChange::Kind::move, 2, 1, 0}}));
    }

    void equalKeysAreToldApartByTheirOrder()
    {
        const QList<QUuid> before = keys({1, 1, 2});
        const QList<QUuid> after = keys({2, 1});
        QCOMPARE(applied(before, after, listDifference(before, after)), after);
    }

    void anyListBecomesAnyOther()
    {
        QRandomGenerator random(20261120);
        for (int round = 0; round < 2000; ++round) {
            QList<QUuid> before;
            QList<QUuid> after;
            for (int i = random.bounded(9); i > 0; --i)
                before.append(key(random.bounded(7)));
            for (int i = random.bounded(9); i > 0; --i)
                after.append(key(random.bounded(7)));
            QCOMPARE(applied(before, after, listDifference(before, after)), after);
        }
    }
};

QTEST_GUILESS_MAIN(ListDifferenceTest)
#include "ListDifferenceTest.moc"
