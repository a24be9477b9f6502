#include "settings/L10n.h"

#include "L10nExpectedTexts.h"

#include "settings/AppSettings.h"
#include "settings/SettingChoices.h"

#include <QTest>

namespace talvenor {

class L10nTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextInBothLanguages_data();
    void everyTextInBothLanguages();
    void theTableHasNoOtherTexts();
    void aSwitchTakesEffectAtTheNextReading();
    void theHintsNameTheButtonsAsTheyAreCalled();
    void aMeetingsTitleIsTheSameInBothLanguages();
    void languagesHaveTheirNamesAndForms();
    void choicesHaveTheirNamesAndForms();
};

void L10nTest::everyTextInBothLanguages_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(test::expectedTexts.size()); ++i)
        QTest::newRow(test::expectedTexts[std::size_t(i)].name) << i;
}

void L10nTest::everyTextInBothLanguages()
{
    QFETCH(int, index);
    const test::ExpectedText &text = test::expectedTexts[std::size_t(index)];
    AppSettings::shared().setAppLanguage(AppLanguage::english);
    QCOMPARE(text.read(), QString::fromUtf8(text.english));
    AppSettings::shared().setAppLanguage(AppLanguage::german);
    QCOMPARE(text.read(), QString::fromUtf8(text.german));
}

void L10nTest::theTableHasNoOtherTexts()
{
    std::size_t count = 2; // the two hints, which are made of other texts
#define TALVENOR_COUNT_TEXT(name, english, german) ++count;
    TALVENOR_L10N_TABLE(TALVENOR_COUNT_TEXT)
#undef TALVENOR_COUNT_TEXT
    QCOMPARE(test::expectedTexts.size(), count);
}

void L10nTest::aSwitchTakesEffectAtTheNextReading()
{
    AppSettings::shared().setAppLanguage(AppLanguage::german);
    QVERIFY(L10n::isGerman());
    QCOMPARE(L10n::current(), AppLanguage::german);
    const QString kept = L10n::settings();
    AppSettings::shared().setAppLanguage(AppLanguage::english);
    QVERIFY(!L10n::isGerman());
    QCOMPARE(L10n::current(), AppLanguage::english);
    QCOMPARE(L10n::settings(), QStringLiteral("Settings"));
    QCOMPARE(kept, QStringLiteral("Einstellungen"));
}

void L10nTest::theHintsNameTheButtonsAsTheyAreCalled()
{
    for (const AppLanguage language : allAppLanguages()) {
        AppSettings::shared().setAppLanguage(language);
        QVERIFY(L10n::noTranscriptHint().contains(u'"' + L10n::transcribe() + u'"'));
        QVERIFY(L10n::noSummaryHint().contains(u'"' + L10n::summarize() + u'"'));
    }
}

void L10nTest::aMeetingsTitleIsTheSameInBothLanguages()
{
    for (const AppLanguage language : allAppLanguages()) {
        AppSettings::shared().setAppLanguage(language);
        QCOMPARE(L10n::meetingTitle(QStringLiteral("09.03.2026, 08:05 %1")),
                 QStringLiteral("Meeting 09.03.2026, 08:05 %1"));
        QCOMPARE(L10n::meetingTitle(QString()), QStringLiteral("Meeting "));
    }
}

void L10nTest::languagesHaveTheirNamesAndForms()
{
    const QList<AppLanguage> expected{AppLanguage::german, AppLanguage::english};
    QCOMPARE(allAppLanguages(), expected);
    for (const AppLanguage uiLanguage : expected) {
        AppSettings::shared().setAppLanguage(uiLanguage);
        QCOMPARE(stringForm(AppLanguage::german), QStringLiteral("de"));
        QCOMPARE(stringForm(AppLanguage::english), QStringLiteral("en"));
        QCOMPARE(displayName(AppLanguage::german), QStringLiteral("Deutsch"));
        QCOMPARE(displayName(AppLanguage::english), QStringLiteral("English"));
        QCOMPARE(flag(AppLanguage::german), QStringLiteral("DE"));
        QCOMPARE(flag(AppLanguage::english), QStringLiteral("EN"));
    }
    for (const AppLanguage language : expected)
        QCOMPARE(appLanguageFromString(stringForm(language)), std::optional(language));
    for (const char *unknown : {"", "fr", "DE", "en ", "de-DE"})
        QVERIFY(!appLanguageFromString(QString::fromLatin1(unknown)));
}

void L10nTest::choicesHaveTheirNamesAndForms()
{
    const QList<AudioSource> sources{AudioSource::systemAudio, AudioSource::microphone, AudioSource::both};
    QCOMPARE(allAudioSources(), sources);
    const QStringList forms{QStringLiteral("systemAudio"), QStringLiteral("microphone"),
                            QStringLiteral("both")};
    const QStringList english{QStringLiteral("System Audio"), QStringLiteral("Microphone"),
                              QStringLiteral("Both")};
    const QStringList german{QStringLiteral("System-Audio"), QStringLiteral("Mikrofon"),
                             QStringLiteral("Beides")};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(stringForm(sources[i]), forms[i]);
        QCOMPARE(audioSourceFromString(forms[i]), std::optional(sources[i]));
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        QCOMPARE(displayName(sources[i]), english[i]);
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(displayName(sources[i]), german[i]);
    }
    QVERIFY(!audioSourceFromString(QStringLiteral("System Audio")));

    const QList<TranscriptionLanguage> languages{TranscriptionLanguage::german,
                                                 TranscriptionLanguage::english};
    QCOMPARE(allTranscriptionLanguages(), languages);
    QCOMPARE(stringForm(TranscriptionLanguage::german), QStringLiteral("de-DE"));
    QCOMPARE(stringForm(TranscriptionLanguage::english), QStringLiteral("en-US"));
    QCOMPARE(displayName(TranscriptionLanguage::german), QStringLiteral("Deutsch"));
    QCOMPARE(displayName(TranscriptionLanguage::english), QStringLiteral("English"));
    for (const TranscriptionLanguage language : languages)
        QCOMPARE(transcriptionLanguageFromString(stringForm(language)), std::optional(language));
    QVERIFY(!transcriptionLanguageFromString(QStringLiteral("de")));
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::L10nTest)
#include "L10nTest.moc"
