#include "screens/ContentState.h"
#include "recorderfakes/RecorderFixture.h"
#include "screens/L10nTexts.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "settings/L10n.h"
#include "support/Await.h"

#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;
using test::waitUntil;

/// The root view's decisions, the record button's state, and the texts.
class ContentStateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signingOutChangesTheRouteAndKeepsListAndRecording()
    {
        RecorderFixture fixture;
        fixture.signIn();
        ContentState content;
        QVERIFY(content.isLoggedIn());
        content.record()->toggleRecording();
        QVERIFY(waitUntil([&] { return content.record()->isRecording(); }));
        QSignalSpy routes(&content, &ContentState::isLoggedInChanged);
        content.signOut();
        QCOMPARE(routes.size(), 1);
        QVERIFY(!content.isLoggedIn());
        QVERIFY(content.record()->isRecording());
        QCOMPARE(content.recordings()->rowCount(), 1);
        fixture.signIn({{QStringLiteral("email"), QStringLiteral("other@example.invalid")}});
        QVERIFY(content.isLoggedIn());
        QCOMPARE(content.recordings()->rowCount(), 1);
        content.record()->toggleRecording();
        QVERIFY(!content.record()->isRecording());
    }

    void theSetUpIsPresentedExactlyWhileSomebodyIsSignedInWhoHasNotBeenThroughIt()
    {
        RecorderFixture fixture;
        AppSettings::shared().setHasCompletedSetup(false);
        ContentState content;
        QSignalSpy changes(&content, &ContentState::isSetupPresentedChanged);
        QVERIFY(!content.isSetupPresented());
        fixture.signIn();
        QVERIFY(content.isSetupPresented());
        QCOMPARE(changes.size(), 1);
        content.setSetupPresented(true);
        QVERIFY(!AppSettings::shared().hasCompletedSetup());
        fixture.signOut();
        QVERIFY(!content.isSetupPresented());
        QVERIFY(!AppSettings::shared().hasCompletedSetup());
        fixture.signIn();
        QVERIFY(content.isSetupPresented());
        content.setSetupPresented(false);
        QVERIFY(AppSettings::shared().hasCompletedSetup());
        QVERIFY(!content.isSetupPresented());
        QCOMPARE(changes.size(), 4);
        // Other settings are no news, nor is the same once more.
        AppSettings::shared().setAutoTranscribe(true);
        content.setSetupPresented(false);
        QCOMPARE(changes.size(), 4);
    }

    void theUserIsToldAsTheProfileComesAndGoes()
    {
        RecorderFixture fixture;
        ContentState content;
        QSignalSpy changes(&content, &ContentState::currentUserChanged);
        QVERIFY(!content.currentUser().isValid());
        QCOMPARE(content.subscriptionTier(), QStringLiteral("free"));
        fixture.signIn({{QStringLiteral("role"), QStringLiteral("admin")}});
        QVERIFY(!changes.isEmpty());
        QVERIFY(content.isAdmin());
        QCOMPARE(content.subscriptionTier(), QStringLiteral("premium"));
        QCOMPARE(content.currentUser().value<UserProfile>().tierDisplayName(), QStringLiteral("Premium"));
        fixture.signOut();
        QVERIFY(!content.currentUser().isValid());
        QVERIFY(!content.isAdmin());
    }

    void theWideButtonStopsOrShowsTheRecordScreenAndNeverStarts()
    {
        RecorderFixture fixture;
        fixture.signIn();
        ContentState content;
        content.record()->stopOrShowRecordScreen();
        QCOMPARE(content.recordings()->rowCount(), 0);
        content.record()->toggleRecording();
        QVERIFY(waitUntil([&] { return content.record()->isRecording(); }));
        QVERIFY(content.hasSelection());
        content.record()->stopOrShowRecordScreen();
        QVERIFY(!content.record()->isRecording());
        QVERIFY(content.hasSelection());
        content.record()->stopOrShowRecordScreen();
        QVERIFY(!content.hasSelection());
        QVERIFY(!content.record()->isRecording());
    }

    void aRefusalIsShownInTheAlertUntilItIsDismissed()
    {
        RecorderFixture fixture;
        fixture.signIn({{QStringLiteral("can_record"), false}});
        ContentState content;
        content.record()->toggleRecording();
        QVERIFY(content.showError());
        QCOMPARE(content.errorMessage(),
                 QStringLiteral("Recording limit reached. Please upgrade your plan."));
        QVERIFY(!content.hasSelection());
        content.dismissError();
        QVERIFY(!content.showError());
        // The text outlives its alert, so that it does not change while the alert is going.
        QCOMPARE(content.errorMessage(),
                 QStringLiteral("Recording limit reached. Please upgrade your plan."));
    }

    void withoutAMessageTheErrorIsUnknown()
    {
        RecorderFixture fixture;
        ContentState content;
        QCOMPARE(content.errorMessage(), QStringLiteral("Unknown error"));
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(content.errorMessage(), QStringLiteral("Unbekannter Fehler"));
    }

    void textsChangeWithTheLanguageAndWithNothingElse()
    {
        RecorderFixture fixture;
        L10nTexts texts;
        QSignalSpy changes(&texts, &L10nTexts::changed);
        AppSettings::shared().setAutoTranscribe(true);
        QCOMPARE(changes.size(), 0);
        texts.setCurrent(QStringLiteral("de"));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(texts.currentForm(), QStringLiteral("de"));
        QCOMPARE(texts.property("readyToRecord").toString(), QStringLiteral("Bereit zur Aufnahme"));
        QCOMPARE(texts.property("noTranscriptHint").toString(), L10n::noTranscriptHint());
        texts.setCurrent(QStringLiteral("fr"));
        texts.setCurrent(QStringLiteral("de"));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(texts.flag(QStringLiteral("en")), QStringLiteral("EN"));
        QCOMPARE(texts.displayName(QStringLiteral("de")), QStringLiteral("Deutsch"));
    }

    void everyTextOfTheTableIsAProperty()
    {
        const QMetaObject &type = L10nTexts::staticMetaObject;
        int count = 0;
#define TALVENOR_CHECK_TEXT(name, english, german)                                                           \
    {                                                                                                        \
        const int index = type.indexOfProperty(#name);                                                       \
        QVERIFY2(index >= 0, #name);                                                                         \
        QVERIFY2(type.property(index).hasNotifySignal(), #name);                                             \
        ++count;                                                                                             \
    }
        TALVENOR_L10N_TABLE(TALVENOR_CHECK_TEXT)
#undef TALVENOR_CHECK_TEXT
        QVERIFY(count > 50);
    }
};

QTEST_GUILESS_MAIN(ContentStateTest)
#include "ContentStateTest.moc"
