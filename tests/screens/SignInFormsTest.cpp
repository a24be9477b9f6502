#include "recorderfakes/RecorderFixture.h"
#include "screens/LoginState.h"
#include "screens/RegisterState.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::await;
using test::RecorderFixture;
using test::waitUntil;

namespace {

QJsonObject profile()
{
    return {{QStringLiteral("id"), 1},
            {QStringLiteral("email"), QStringLiteral("ann@example.invalid")},
            {QStringLiteral("name"), QStringLiteral("Ann")},
            {QStringLiteral("role"), QStringLiteral("user")},
            {QStringLiteral("subscription_tier"), QStringLiteral("free")},
            {QStringLiteral("recordings_count"), 0}};
}

void acceptEveryone(RecorderFixture &fixture)
{
    const QJsonObject answer{{QStringLiteral("token"), QStringLiteral("t")},
                             {QStringLiteral("user"), profile()}};
    fixture.service->answer(QStringLiteral("GET /auth/me"), 200, profile());
    fixture.service->answer(QStringLiteral("POST /auth/login"), 200, answer);
    fixture.service->answer(QStringLiteral("POST /auth/register"), 200, answer);
}

QJsonObject refusal(const QString &text)
{
    return {{QStringLiteral("error"), text}};
}

void fill(RegisterState &form, const QString &password, const QString &confirmation)
{
    form.setProperty("name", QStringLiteral("Ann"));
    form.setProperty("email", QStringLiteral("ann@example.invalid"));
    form.setProperty("password", password);
    form.setProperty("confirmPassword", confirmation);
}

} // namespace

/// Sign-in and registration without their windows.
class SignInFormsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFieldsAreSentAsTheyAre()
    {
        RecorderFixture fixture;
        acceptEveryone(fixture);
        LoginState login;
        login.setEmail(QStringLiteral(" ann@example.invalid "));
        login.setPassword(QStringLiteral(" s "));
        QVERIFY(login.isFilled());
        await(login.doLogin());
        const QJsonObject sent = fixture.service->requests(QStringLiteral("POST /auth/login")).first().body;
        QCOMPARE(sent[QStringLiteral("email")].toString(), QStringLiteral(" ann@example.invalid "));
        QCOMPARE(sent[QStringLiteral("password")].toString(), QStringLiteral(" s "));
        QVERIFY(AuthService::shared().isLoggedIn());
        QVERIFY(login.errorMessage().isEmpty());
    }

    void aFailureKeepsTheFieldsAndTheNextAttemptClearsItsText()
    {
        RecorderFixture fixture;
        fixture.service->answer(QStringLiteral("POST /auth/login"), 401, refusal(QStringLiteral("no")));
        LoginState login;
        login.setEmail(QStringLiteral("ann@example.invalid"));
        login.setPassword(QStringLiteral("wrong"));
        await(login.doLogin());
        // Also here, though the user has just typed a password.
        QCOMPARE(login.errorMessage(), QStringLiteral("Session expired. Please log in again."));
        QCOMPARE(login.email(), QStringLiteral("ann@example.invalid"));
        QCOMPARE(login.password(), QStringLiteral("wrong"));
        QVERIFY(!AuthService::shared().isLoggedIn());

        acceptEveryone(fixture);
        fixture.service->hold(QStringLiteral("POST /auth/login"));
        login.signIn();
        QVERIFY(waitUntil([&] { return login.isLoading(); }));
        QVERIFY(login.errorMessage().isEmpty());
        fixture.service->release(QStringLiteral("POST /auth/login"));
        QVERIFY(waitUntil([&] { return !login.isLoading(); }));
        QVERIFY(AuthService::shared().isLoggedIn());
    }

    void aFormThatIsGoneByTheAnswerHarmsNobody()
    {
        RecorderFixture fixture;
        fixture.service->answer(QStringLiteral("POST /auth/login"), 401, refusal(QStringLiteral("no")));
        fixture.service->hold(QStringLiteral("POST /auth/login"));
        auto login = std::make_unique<LoginState>();
        login->signIn();
        QVERIFY(waitUntil([&] { return login->isLoading(); }));
        login.reset();
        fixture.service->release(QStringLiteral("POST /auth/login"));
        QVERIFY(waitUntil([] { return !AuthService::shared().isLoading(); }));
        QVERIFY(!AuthService::shared().isLoggedIn());
    }

    void theFormIsValidByThese_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("confirmation");
        QTest::addColumn<bool>("valid");
        QTest::newRow("5 characters") << QStringLiteral("12345") << QStringLiteral("12345") << false;
        QTest::newRow("6 characters") << QStringLiteral("123456") << QStringLiteral("123456") << true;
        QTest::newRow("different") << QStringLiteral("123456") << QStringLiteral("123457") << false;
        QTest::newRow("6 emoji") << QStringLiteral("😀😀😀😀😀😀") << QStringLiteral("😀😀😀😀😀😀") << true;
        QTest::newRow("3 emoji") << QStringLiteral("😀😀😀") << QStringLiteral("😀😀😀") << false;
        // What looks like one character may be many code points: a family, a flag, an accent put on its
        // letter.
        const QString families = QStringLiteral("👨‍👩‍👧‍👦").repeated(5);
        QTest::newRow("5 families") << families << families << false;
        QTest::newRow("6 families") << families + QStringLiteral("👨‍👩‍👧‍👦")
                                    << families + QStringLiteral("👨‍👩‍👧‍👦") << true;
        QTest::newRow("3 flags") << QStringLiteral("🇩🇪🇫🇷🇮🇹") << QStringLiteral("🇩🇪🇫🇷🇮🇹") << false;
        QTest::newRow("5 skin tones")
            << QStringLiteral("👍🏽").repeated(5) << QStringLiteral("👍🏽").repeated(5) << false;
        QTest::newRow("3 accents") << QStringLiteral("e\u0301").repeated(3)
                                   << QStringLiteral("e\u0301").repeated(3) << false;
        QTest::newRow("megabytes") << QString(2'000'000, u'x') << QString(2'000'000, u'x') << true;
        QTest::newRow("spaces") << QStringLiteral("      ") << QStringLiteral("      ") << true;
    }

    void theFormIsValidByThese()
    {
        QFETCH(const QString, password);
        QFETCH(const QString, confirmation);
        RecorderFixture fixture;
        RegisterState form;
        fill(form, password, confirmation);
        QTEST(form.isFormValid(), "valid");
    }

    void everyFieldOfTheFormIsNeeded()
    {
        RecorderFixture fixture;
        for (const char *const field : {"name", "email", "password", "confirmPassword"}) {
            RegisterState form;
            fill(form, QStringLiteral("123456"), QStringLiteral("123456"));
            QVERIFY(form.isFormValid());
            QSignalSpy changes(&form, &RegisterState::fieldsChanged);
            form.setProperty(field, QString());
            QVERIFY(!form.isFormValid());
            QCOMPARE(changes.size(), 1);
        }
    }

    void differentPasswordsAreToldInTheLanguageSetAndNothingIsSent()
    {
        RecorderFixture fixture;
        RegisterState form;
        fill(form, QStringLiteral("123456"), QStringLiteral("654321"));
        await(form.doRegister());
        QCOMPARE(form.errorMessage(), QStringLiteral("Passwords do not match"));
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        await(form.doRegister());
        QCOMPARE(form.errorMessage(), QStringLiteral("Passwörter stimmen nicht überein"));
        QVERIFY(fixture.service->allRequests().isEmpty());
    }

    void successDismissesTheSheetAndSignsIn()
    {
        RecorderFixture fixture;
        acceptEveryone(fixture);
        RegisterState form;
        fill(form, QStringLiteral("123456"), QStringLiteral("123456"));
        QSignalSpy dismissals(&form, &RegisterState::dismiss);
        await(form.doRegister());
        QCOMPARE(dismissals.size(), 1);
        QVERIFY(AuthService::shared().isLoggedIn());
        const QJsonObject sent =
            fixture.service->requests(QStringLiteral("POST /auth/register")).first().body;
        QCOMPARE(sent[QStringLiteral("name")].toString(), QStringLiteral("Ann"));
    }

    void aRefusalIsToldInTheServicesOwnWords()
    {
        RecorderFixture fixture;
        const QString text = QStringLiteral("This address is taken.");
        fixture.service->answer(QStringLiteral("POST /auth/register"), 400, refusal(text));
        RegisterState form;
        fill(form, QStringLiteral("123456"), QStringLiteral("123456"));
        QSignalSpy dismissals(&form, &RegisterState::dismiss);
        await(form.doRegister());
        QVERIFY2(form.errorMessage().contains(text), qPrintable(form.errorMessage()));
        QVERIFY(dismissals.isEmpty());
        QVERIFY(!AuthService::shared().isLoggedIn());
    }
};

QTEST_GUILESS_MAIN(SignInFormsTest)
#include "SignInFormsTest.moc"
