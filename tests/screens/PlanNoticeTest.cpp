#include "screens/PlanNotice.h"

#include <QTest>

using namespace talvenor;

namespace {

UserProfile user(const char *tier, qint64 count, std::optional<qint64> limit = {}, const char *role = "user")
{
    UserProfile profile;
    profile.subscription_tier = QString::fromLatin1(tier);
    profile.recordings_count = count;
    profile.recordings_limit = limit;
    profile.role = QString::fromLatin1(role);
    return profile;
}

PlanNotice notice(const UserProfile &profile)
{
    return PlanNotice::of(profile, AppLanguage::english);
}

} // namespace

/// What the record screen says of a user's plan.
class PlanNoticeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAUserNothingIsSaid() { QCOMPARE(PlanNotice::of({}, AppLanguage::english), PlanNotice()); }

    void theTierAloneDecidesWhatIsShown_data()
    {
        QTest::addColumn<QString>("tier");
        QTest::addColumn<bool>("hasBanner");
        QTest::addColumn<bool>("hasUsageLine");
        QTest::newRow("free") << QStringLiteral("free") << true << true;
        QTest::newRow("basic") << QStringLiteral("basic") << false << true;
        QTest::newRow("premium") << QStringLiteral("premium") << false << false;
        QTest::newRow("lifetime") << QStringLiteral("lifetime") << false << true;
        QTest::newRow("another case") << QStringLiteral("Premium") << false << true;
        QTest::newRow("none") << QString() << false << true;
    }

    void theTierAloneDecidesWhatIsShown()
    {
        QFETCH(const QString, tier);
        for (const char *role : {"user", "admin"}) {
            const PlanNotice shown = notice(user(tier.toLatin1(), 0, {}, role));
            QTEST(shown.hasBanner, "hasBanner");
            QTEST(shown.hasUsageLine, "hasUsageLine");
        }
    }

    void theLimitIsTheProfilesElseThePlans()
    {
        QCOMPARE(notice(user("free", 2, 10)).usage, QStringLiteral("2/10 recordings this month"));
        QCOMPARE(notice(user("basic", 2, 0)).usage, QStringLiteral("2/0 recordings this month"));
        QCOMPARE(notice(user("basic", 2)).usage, QStringLiteral("2/25 recordings this month"));
        QCOMPARE(notice(user("free", 2)).usage, QStringLiteral("2/3 recordings this month"));
        QCOMPARE(notice(user("lifetime", 2)).usage, QStringLiteral("2/3 recordings this month"));
    }

    void numbersAreInPlainDigits()
    {
        QCOMPARE(notice(user("free", 1234567, 9876543)).usage,
                 QStringLiteral("1234567/9876543 recordings this month"));
        QCOMPARE(notice(user("free", -4, 3)).usage, QStringLiteral("-4/3 recordings this month"));
    }

    void theTextIsInTheLanguageAsked()
    {
        QCOMPARE(PlanNotice::of(user("free", 1, 3), AppLanguage::german).usage,
                 QStringLiteral("1/3 Aufnahmen diesen Monat"));
    }

    void theWarningBeginsWithOneRecordingLeft()
    {
        QVERIFY(!notice(user("free", 1, 3)).isWarning);
        QVERIFY(notice(user("free", 2, 3)).isWarning);
        QVERIFY(notice(user("free", 3, 3)).isWarning);
        QVERIFY(notice(user("free", 9, 3)).isWarning);
    }

    void aBasicUserWithoutALimitIsWarnedAsIfItWereThree()
    {
        QVERIFY(!notice(user("basic", 1)).isWarning);
        QVERIFY(notice(user("basic", 2)).isWarning);
        QCOMPARE(notice(user("basic", 2)).usage, QStringLiteral("2/25 recordings this month"));
    }

    void onlyAFreeAccountIsOfferedAnUpgradeAndOnlyWithTheWarning()
    {
        QVERIFY(notice(user("free", 2, 3)).offersUpgrade);
        QVERIFY(!notice(user("free", 1, 3)).offersUpgrade);
        QVERIFY(!notice(user("basic", 25, 25)).offersUpgrade);
        QVERIFY(notice(user("basic", 25, 25)).isWarning);
    }
};

QTEST_GUILESS_MAIN(PlanNoticeTest)
#include "PlanNoticeTest.moc"
