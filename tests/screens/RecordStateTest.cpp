#include "screens/RecordState.h"
#include "recorderfakes/RecorderFixture.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;
using test::waitUntil;

/// What the record screen is told, by real parts below it.
class RecordStateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theStateFollowsASession()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecordState state(fixture.start());
        QVERIFY(!state.isRecording());
        QVERIFY(state.audioLevels().values.isEmpty());
        state.toggleRecording();
        QVERIFY(waitUntil([&] { return state.isRecording(); }));
        PcmBuffer buffer({48000, 1}, 480);
        std::fill_n(buffer.floatChannelData()[0], 480, 0.5F);
        fixture.tap(buffer);
        QSignalSpy changes(&state, &RecordState::audioLevelsChanged);
        QVERIFY(
            waitUntil([&] { return state.audioLevel() > 0.5 && state.audioLevels().values.size() >= 3; }));
        QCOMPARE(static_cast<double>(state.audioLevels().values.constLast()), state.audioLevel());
        QVERIFY(changes.size() >= 2);
        state.toggleRecording();
        QVERIFY(!state.isRecording());
        QVERIFY(waitUntil([&] { return state.audioLevels().values.isEmpty(); }));
    }

    void twoPressesBeforeCaptureRunsAreTwoStarts()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecordState state(fixture.start());
        state.toggleRecording();
        state.toggleRecording();
        QCOMPARE(fixture.viewModel->recordings().size(), 2);
    }

    void theNoticeFollowsTheUser()
    {
        RecorderFixture fixture;
        RecordState state(fixture.start());
        QVERIFY(!state.hasUpgradeBanner());
        QVERIFY(!state.hasUsageLine());
        QSignalSpy changes(&state, &RecordState::planNoticeChanged);
        fixture.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("free")},
                        {QStringLiteral("recordings_count"), 2},
                        {QStringLiteral("recordings_limit"), 3}});
        QVERIFY(state.hasUpgradeBanner());
        QVERIFY(state.hasUsageLine());
        QVERIFY(state.isUsageWarning());
        QVERIFY(state.offersUpgrade());
        QCOMPARE(state.usage(), QStringLiteral("2/3 recordings this month"));
        QCOMPARE(changes.size(), 1);
        fixture.signOut();
        QVERIFY(!state.hasUsageLine());
        QCOMPARE(changes.size(), 2);
    }

    void theNoticeIsToldInTheLanguageOfTheMoment()
    {
        RecorderFixture fixture;
        fixture.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("basic")}});
        RecordState state(fixture.start());
        QCOMPARE(state.usage(), QStringLiteral("0/25 recordings this month"));
        QSignalSpy changes(&state, &RecordState::planNoticeChanged);
        AppSettings::shared().setAutoTranscribe(true);
        QCOMPARE(changes.size(), 0);
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(state.usage(), QStringLiteral("0/25 Aufnahmen diesen Monat"));
    }
};

QTEST_GUILESS_MAIN(RecordStateTest)
#include "RecordStateTest.moc"
