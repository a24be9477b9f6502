#include "RunningService.h"

#include <QJsonDocument>
#include <QTest>

#include <thread>
#include <vector>

using namespace talvenor;
using test::HttpAnswer;
using test::HttpClient;
using test::RunningService;

namespace {

QStringList sortedKeys(const QJsonObject &object)
{
    QStringList keys = object.keys();
    keys.sort();
    return keys;
}

const QStringList profileKeys = {QStringLiteral("can_record"),
                                 QStringLiteral("email"),
                                 QStringLiteral("id"),
                                 QStringLiteral("name"),
                                 QStringLiteral("recordings_count"),
                                 QStringLiteral("recordings_limit"),
                                 QStringLiteral("role"),
                                 QStringLiteral("subscription_expires_at"),
                                 QStringLiteral("subscription_tier")};

QJsonObject credentials(const QString &email, const QString &password)
{
    return {{QStringLiteral("email"), email}, {QStringLiteral("password"), password}};
}

const QJsonObject recording = {{QStringLiteral("title"), QStringLiteral("Weekly")},
                               {QStringLiteral("duration"), 61.5}};

} // namespace

/// What the clients of the service rely on, over real HTTP.
class ServiceContractTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registrationGivesATokenAndTheWholeProfile()
    {
        RunningService service;
        HttpClient client = service.client();
        const HttpAnswer answer = client.signUp(QStringLiteral("  Anna@Example.ORG "));
        QCOMPARE(answer.status, 201);
        QVERIFY(answer.headers.contains("Content-Type: application/json"));
        const QJsonObject object = answer.object();
        QCOMPARE(sortedKeys(object), (QStringList{QStringLiteral("token"), QStringLiteral("user")}));
        QVERIFY(object[u"token"].isString());
        QCOMPARE(object[u"token"].toString().size(), 43); // 256 bits in base 64
        const QJsonObject user = object[u"user"].toObject();
        QCOMPARE(sortedKeys(user), profileKeys);
        QVERIFY(user[u"id"].toInteger(-1) > 0);
        QCOMPARE(user[u"email"].toString(), QStringLiteral("anna@example.org"));
        QCOMPARE(user[u"name"].toString(), QStringLiteral("Anna"));
        QCOMPARE(user[u"role"].toString(), QStringLiteral("user"));
        QCOMPARE(user[u"subscription_tier"].toString(), QStringLiteral("free"));
        QVERIFY(user[u"subscription_expires_at"].isNull());
        QVERIFY(user[u"recordings_count"].isDouble());
        QCOMPARE(user[u"recordings_count"].toInteger(-1), 0);
        QCOMPARE(user[u"recordings_limit"].toInteger(-1), 3);
        QVERIFY(user[u"can_record"].isBool());
        QVERIFY(user[u"can_record"].toBool());
    }

    void integersHaveNoFraction()
    {
        RunningService service;
        HttpClient client = service.client();
        const QByteArray body = client.signUp(QStringLiteral("a@b.c")).body;
        QVERIFY(body.contains("\"recordings_count\":0,"));
        QVERIFY(body.contains("\"recordings_limit\":3,"));
    }

    void loginGivesANewTokenOfTheSameAccount()
    {
        RunningService service;
        HttpClient client = service.client();
        const QString first = client.signUp(QStringLiteral("a@b.c")).object()[u"token"].toString();
        client.token.clear();
        const HttpAnswer answer = client.post(QStringLiteral("/auth/login"),
                                              credentials(QStringLiteral("A@B.C"), QStringLiteral("secret")));
        QCOMPARE(answer.status, 200);
        QCOMPARE(sortedKeys(answer.object()), (QStringList{QStringLiteral("token"), QStringLiteral("user")}));
        QCOMPARE(sortedKeys(answer.object()[u"user"].toObject()), profileKeys);
        const QString second = answer.object()[u"token"].toString();
        QVERIFY(first != second);
        for (const QString &token : {first, second}) {
            client.token = token;
            QCOMPARE(client.get(QStringLiteral("/auth/me")).status, 200);
        }
    }

    void aWrongPasswordAndAnUnknownAddressSoundAlike()
    {
        RunningService service;
        HttpClient client = service.client();
        client.signUp(QStringLiteral("a@b.c"));
        client.token.clear();
        const auto wrong = client.post(QStringLiteral("/auth/login"),
                                       credentials(QStringLiteral("a@b.c"), QStringLiteral("wrong1")));
        const auto unknown = client.post(QStringLiteral("/auth/login"),
                                         credentials(QStringLiteral("x@b.c"), QStringLiteral("wrong1")));
        QCOMPARE(wrong.status, 401);
        QCOMPARE(unknown.status, 401);
        QVERIFY(!wrong.error().isEmpty());
        QCOMPARE(wrong.body, unknown.body);
    }

    void anAddressIsTakenOnce()
    {
        RunningService service;
        HttpClient client = service.client();
        QCOMPARE(client.signUp(QStringLiteral("a@b.c")).status, 201);
        const HttpAnswer again = client.signUp(QStringLiteral("A@B.c"));
        QCOMPARE(again.status, 409);
        QCOMPARE(again.error(), QStringLiteral("An account with this e-mail address exists already."));
    }

    void concurrentRegistrationsOfOneAddressMakeOneAccount()
    {
        RunningService service;
        std::atomic<int> made = 0;
        std::atomic<int> refused = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < 8; ++index) {
            threads.emplace_back([&] {
                HttpClient client = service.client();
                const int status = client.signUp(QStringLiteral("same@b.c")).status;
                made += status == 201 ? 1 : 0;
                refused += status == 409 ? 1 : 0;
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(made.load(), 1);
        QCOMPARE(refused.load(), 7);
    }

    void registrationChecksItsFields_data()
    {
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("name");
        const QString email = QStringLiteral("a@b.c");
        const QString password = QStringLiteral("secret");
        const QString name = QStringLiteral("Anna");
        QTest::newRow("no address") << QStringLiteral("anna") << password << name;
        QTest::newRow("two at signs") << QStringLiteral("a@b@c") << password << name;
        QTest::newRow("line feed in the address") << QStringLiteral("a@b.c\nBcc: x@y.z") << password << name;
        QTest::newRow("long address") << QString(300, QLatin1Char('a')) + email << password << name;
        QTest::newRow("five characters") << email << QStringLiteral("äöüßx") << name;
        QTest::newRow("endless password") << email << QString(1025, QLatin1Char('p')) << name;
        QTest::newRow("blank name") << email << password << QStringLiteral("   ");
        QTest::newRow("endless name") << email << password << QString(401, QLatin1Char('n'));
        QTest::newRow("control character") << email << password << QStringLiteral("An\u0000na");
        QTest::newRow("header in the name") << email << password << QStringLiteral("A\r\nX: y");
    }

    void registrationChecksItsFields()
    {
        QFETCH(QString, email);
        QFETCH(QString, password);
        QFETCH(QString, name);
        RunningService service;
        const HttpAnswer answer =
            service.client().post(QStringLiteral("/auth/register"), {{QStringLiteral("email"), email},
                                                                     {QStringLiteral("password"), password},
                                                                     {QStringLiteral("name"), name}});
        QCOMPARE(answer.status, 400);
        QVERIFY(!answer.error().isEmpty());
    }

    void sixCharactersOfAnyScriptAreAPassword()
    {
        RunningService service;
        HttpClient client = service.client();
        QCOMPARE(client.signUp(QStringLiteral("a@b.c"), QStringLiteral("äöüßéλ")).status, 201);
        QCOMPARE(client
                     .post(QStringLiteral("/auth/login"),
                           credentials(QStringLiteral("a@b.c"), QStringLiteral("äöüßéλ")))
                     .status,
                 200);
    }

    void theProfileNeedsAToken()
    {
        RunningService service;
        HttpClient client = service.client();
        for (const QString &token : {QString(), QStringLiteral("x"), QString(10000, QLatin1Char('x'))}) {
            client.token = token;
            for (const char *path : {"/auth/me", "/auth/me?x=1"}) {
                const HttpAnswer answer = client.get(QString::fromLatin1(path));
                QCOMPARE(answer.status, 401);
                QCOMPARE(answer.error(), QStringLiteral("Please sign in."));
            }
        }
    }

    void theProfileIsTheAccountsOwn()
    {
        RunningService service;
        HttpClient anna = service.signedIn(QStringLiteral("anna@b.c"));
        HttpClient bert = service.signedIn(QStringLiteral("bert@b.c"), server::Tier::premium);
        QCOMPARE(anna.get(QStringLiteral("/auth/me")).object()[u"email"].toString(),
                 QStringLiteral("anna@b.c"));
        const QJsonObject profile = bert.get(QStringLiteral("/auth/me")).object();
        QCOMPARE(profile[u"email"].toString(), QStringLiteral("bert@b.c"));
        QCOMPARE(profile[u"subscription_tier"].toString(), QStringLiteral("premium"));
        QVERIFY(profile[u"recordings_limit"].isNull());
        QVERIFY(profile[u"can_record"].toBool());
    }

    void aRecordingIsCounted()
    {
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        const HttpAnswer answer = client.post(QStringLiteral("/auth/record"), recording);
        QCOMPARE(answer.status, 201);
        QVERIFY(!answer.object().isEmpty());
        for (const QJsonValue &value : answer.object())
            QVERIFY(!value.isArray() && !value.isObject());
        QCOMPARE(answer.object()[u"recordings_count"].toInteger(-1), 1);
        QCOMPARE(client.get(QStringLiteral("/auth/me")).object()[u"recordings_count"].toInteger(-1), 1);
    }

    void theLastRecordingOfTheMonthTakesTheRight()
    {
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        for (int index = 0; index < 3; ++index)
            QCOMPARE(client.post(QStringLiteral("/auth/record"), recording).status, 201);
        QJsonObject profile = client.get(QStringLiteral("/auth/me")).object();
        QCOMPARE(profile[u"recordings_count"].toInteger(-1), 3);
        QCOMPARE(profile[u"can_record"].toBool(true), false);
        const HttpAnswer refused = client.post(QStringLiteral("/auth/record"), recording);
        QCOMPARE(refused.status, 403);
        QVERIFY(!refused.error().isEmpty());
        QCOMPARE(client.get(QStringLiteral("/auth/me")).object()[u"recordings_count"].toInteger(-1), 3);
        service.advance(std::chrono::days(32));
        profile = client.get(QStringLiteral("/auth/me")).object();
        QCOMPARE(profile[u"recordings_count"].toInteger(-1), 0);
        QCOMPARE(profile[u"can_record"].toBool(false), true);
        QCOMPARE(client.post(QStringLiteral("/auth/record"), recording).status, 201);
    }

    void theLimitHoldsAgainstConcurrentRequests()
    {
        RunningService service;
        const QString token = service.signedIn(QStringLiteral("a@b.c"), server::Tier::basic).token;
        std::atomic<int> taken = 0;
        std::atomic<int> refused = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < 8; ++index) {
            threads.emplace_back([&] {
                HttpClient client = service.client();
                client.token = token;
                for (int count = 0; count < 8; ++count) {
                    const int status = client.post(QStringLiteral("/auth/record"), recording).status;
                    taken += status == 201 ? 1 : 0;
                    refused += status == 403 ? 1 : 0;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(taken.load(), 25);
        QCOMPARE(refused.load(), 64 - 25);
    }

    void recordingFieldsAreChecked_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("no title") << QByteArray(R"({"duration":1})");
        QTest::newRow("title of another type") << QByteArray(R"({"title":1,"duration":1})");
        QTest::newRow("no duration") << QByteArray(R"({"title":"x"})");
        QTest::newRow("duration as text") << QByteArray(R"({"title":"x","duration":"1"})");
        QTest::newRow("negative") << QByteArray(R"({"title":"x","duration":-1})");
        QTest::newRow("endless") << QByteArray(R"({"title":"x","duration":1e999})");
        QTest::newRow("null") << QByteArray(R"({"title":null,"duration":1})");
    }

    void recordingFieldsAreChecked()
    {
        QFETCH(QByteArray, body);
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        const HttpAnswer answer = client.send("POST", QStringLiteral("/auth/record"), body);
        QCOMPARE(answer.status, 400);
        QVERIFY(!answer.error().isEmpty());
        QCOMPARE(client.get(QStringLiteral("/auth/me")).object()[u"recordings_count"].toInteger(-1), 0);
    }

    void aWholeNumberIsADuration()
    {
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        QCOMPARE(
            client.send("POST", QStringLiteral("/auth/record"), R"({"title":"","duration":0,"more":[1]})")
                .status,
            201);
    }

    void theNameCanBeChanged()
    {
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        const QString name = QStringLiteral("Änne 'DROP TABLE' 😀");
        const HttpAnswer answer =
            client.put(QStringLiteral("/auth/profile"), {{QStringLiteral("name"), name}});
        QCOMPARE(answer.status, 200);
        QCOMPARE(sortedKeys(answer.object()), profileKeys);
        QCOMPARE(answer.object()[u"name"].toString(), name);
        QCOMPARE(client.get(QStringLiteral("/auth/me")).object()[u"name"].toString(), name);
        QCOMPARE(client.put(QStringLiteral("/auth/profile"), {{QStringLiteral("name"), QString()}}).status,
                 400);
    }

    void anotherPasswordClosesAllOtherSessions()
    {
        RunningService service;
        HttpClient asking = service.signedIn(QStringLiteral("a@b.c"));
        HttpClient other = service.client();
        other.token = QString::fromStdString(service.accounts().login("a@b.c", "secret", "test").token);
        const auto change = [&](const QString &current, const QString &next) {
            return asking.put(
                QStringLiteral("/auth/password"),
                {{QStringLiteral("current_password"), current}, {QStringLiteral("new_password"), next}});
        };
        QCOMPARE(change(QStringLiteral("wrong1"), QStringLiteral("secret2")).status, 400);
        QCOMPARE(change(QStringLiteral("secret"), QStringLiteral("short")).status, 400);
        QCOMPARE(other.get(QStringLiteral("/auth/me")).status, 200);
        const HttpAnswer answer = change(QStringLiteral("secret"), QStringLiteral("secret2"));
        QCOMPARE(answer.status, 200);
        QVERIFY(!answer.object().isEmpty());
        QCOMPARE(asking.get(QStringLiteral("/auth/me")).status, 200);
        QCOMPARE(other.get(QStringLiteral("/auth/me")).status, 401);
        other.token.clear();
        QCOMPARE(other
                     .post(QStringLiteral("/auth/login"),
                           credentials(QStringLiteral("a@b.c"), QStringLiteral("secret")))
                     .status,
                 401);
        QCOMPARE(other
                     .post(QStringLiteral("/auth/login"),
                           credentials(QStringLiteral("a@b.c"), QStringLiteral("secret2")))
                     .status,
                 200);
    }

    void summariesArePartOfPaidPlans_data()
    {
        QTest::addColumn<int>("tier");
        QTest::addColumn<int>("status");
        QTest::newRow("free") << static_cast<int>(server::Tier::free) << 403;
        QTest::newRow("basic") << static_cast<int>(server::Tier::basic) << 200;
        QTest::newRow("premium") << static_cast<int>(server::Tier::premium) << 200;
        QTest::newRow("lifetime") << static_cast<int>(server::Tier::lifetime) << 200;
    }

    void summariesArePartOfPaidPlans()
    {
        QFETCH(int, tier);
        QFETCH(int, status);
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"), static_cast<server::Tier>(tier));
        const HttpAnswer answer =
            client.post(QStringLiteral("/summarize"),
                        {{QStringLiteral("transcript"), QStringLiteral("[00:01] my name is bob")},
                         {QStringLiteral("language"), QStringLiteral("de")}});
        QCOMPARE(answer.status, status);
        if (status == 200) {
            QCOMPARE(sortedKeys(answer.object()), (QStringList{QStringLiteral("summary")}));
            QVERIFY(
                answer.object()[u"summary"].toString().startsWith(QStringLiteral("## Teilnehmer\n- Bob\n")));
            QVERIFY(answer.object()[u"summary"].toString().endsWith(QStringLiteral("\nPARTICIPANTS: Bob")));
        } else {
            QVERIFY(!answer.error().isEmpty());
        }
    }

    void anAdministratorBuysLikeEverybody()
    {
        RunningService service;
        service.accounts().create("root@b.c", "secret", "Root", server::Tier::free, server::Role::admin);
        HttpClient client = service.client();
        client.token = QString::fromStdString(service.accounts().login("root@b.c", "secret", "test").token);
        const QJsonObject profile = client.get(QStringLiteral("/auth/me")).object();
        QCOMPARE(profile[u"role"].toString(), QStringLiteral("admin"));
        QVERIFY(profile[u"recordings_limit"].isNull());
        for (int index = 0; index < 4; ++index)
            QCOMPARE(client.post(QStringLiteral("/auth/record"), recording).status, 201);
        QCOMPARE(client
                     .post(QStringLiteral("/summarize"), {{QStringLiteral("transcript"), QStringLiteral("x")},
                                                          {QStringLiteral("language"), QStringLiteral("en")}})
                     .status,
                 403);
    }

    void nobodyMakesHimselfAnAdministrator()
    {
        RunningService service;
        HttpClient client = service.client();
        const HttpAnswer answer = client.send(
            "POST", QStringLiteral("/auth/register"),
            R"({"email":"a@b.c","password":"secret","name":"A","role":"admin","subscription_tier":"premium","id":99})");
        QCOMPARE(answer.status, 201);
        const QJsonObject user = answer.object()[u"user"].toObject();
        QCOMPARE(user[u"role"].toString(), QStringLiteral("user"));
        QCOMPARE(user[u"subscription_tier"].toString(), QStringLiteral("free"));
    }

    void theNewestVersionNeedsNoSession()
    {
        RunningService service;
        const HttpAnswer answer = service.client().get(QStringLiteral("/versions/latest"));
        QCOMPARE(answer.status, 200);
        QVERIFY(!answer.object()[u"version"].toString().isEmpty());
        QVERIFY(answer.object()[u"build_number"].toInteger(-1) >= 1);
        QVERIFY(answer.object()[u"download_url"].isNull());
        QVERIFY(answer.object()[u"release_notes"].isNull());
    }

    void refusalsSpeakTheClientsLanguage_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<bool>("german");
        QTest::newRow("none") << QByteArray() << false;
        QTest::newRow("de") << QByteArray("de") << true;
        QTest::newRow("de-AT") << QByteArray("de-AT,de;q=0.9,en;q=0.8") << true;
        QTest::newRow("en first") << QByteArray("en-GB,en;q=0.9,de;q=0.8") << false;
        QTest::newRow("German by weight") << QByteArray("en;q=0.3, DE;q=0.7") << true;
        QTest::newRow("refused German") << QByteArray("de;q=0") << false;
        QTest::newRow("another language") << QByteArray("fr, ja") << false;
        QTest::newRow("rubbish") << QByteArray(";;,=,q=,de;q=x,") << false;
        QTest::newRow("delta") << QByteArray("del") << false;
    }

    void refusalsSpeakTheClientsLanguage()
    {
        QFETCH(QByteArray, header);
        QFETCH(bool, german);
        RunningService service;
        HttpClient client = service.client();
        client.acceptLanguage = header;
        QCOMPARE(client.get(QStringLiteral("/nothing")).error(),
                 german ? QStringLiteral("Hier gibt es nichts.") : QStringLiteral("There is nothing here."));
    }

    void onlyTheRightMethodOnTheRightPath()
    {
        RunningService service;
        HttpClient client = service.client();
        for (const char *path :
             {"", "/", "/auth", "/auth/me/", "/auth//me", "/AUTH/me", "/auth/me%2f", "/auth/m%65",
              "/auth/../auth/me", "/../etc/passwd", "/auth/me/..%2f..", "/versions"}) {
            const HttpAnswer answer = client.send("GET", QString::fromLatin1(path), std::nullopt);
            // curl resolves "..", so that one path is a good one.
            const int expected = QByteArray(path) == "/auth/../auth/me" ? 401 : 404;
            QVERIFY2(answer.status == expected, path);
            QVERIFY(!answer.error().isEmpty());
        }
        const HttpAnswer answer = client.send("DELETE", QStringLiteral("/auth/login"), std::nullopt);
        QCOMPARE(answer.status, 405);
        QVERIFY(answer.headers.contains("Allow: POST\r\n"));
        QVERIFY(!answer.error().isEmpty());
        QCOMPARE(client.send("PATCH", QStringLiteral("/auth/me"), std::nullopt).status, 405);
        QCOMPARE(client.send("BREW", QStringLiteral("/auth/me"), std::nullopt).status, 405);
    }

    void guessingPasswordsIsSlowedDown()
    {
        server::LoginLimits limits;
        limits.perAccount = 3;
        limits.perAddress = 5;
        RunningService service({}, limits);
        service.signedIn(QStringLiteral("a@b.c"));
        const HttpClient client = service.client();
        const auto attempt = [&](const char *email, const char *password) {
            return client
                .post(QStringLiteral("/auth/login"),
                      credentials(QString::fromLatin1(email), QString::fromLatin1(password)))
                .status;
        };
        QCOMPARE(attempt("a@b.c", "secret"), 200); // Success counts for nothing.
        for (int index = 0; index < 3; ++index)
            QCOMPARE(attempt("a@b.c", "wrong1"), 401);
        QCOMPARE(attempt("a@b.c", "secret"), 429); // The right one is not told apart any more.
        QCOMPARE(attempt("x@b.c", "wrong1"), 401);
        QCOMPARE(attempt("y@b.c", "wrong1"), 401);
        QCOMPARE(attempt("z@b.c", "wrong1"), 429); // All accounts together.
        service.advance(limits.window);
        QCOMPARE(attempt("a@b.c", "secret"), 200);
    }

    void aConnectionServesManyRequests()
    {
        RunningService service;
        const QByteArray request = "GET /api/versions/latest HTTP/1.1\r\nHost: x\r\n\r\n";
        const QByteArray last = "GET /api/versions/latest HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n";
        const QByteArray missing = "GET /api/none HTTP/1.1\r\nHost: x\r\n\r\n";
        const QByteArray answers = test::exchangeRaw(service.port(), request + missing + request + last);
        QCOMPARE(answers.count("HTTP/1.1 200 OK"), 3);
        QCOMPARE(answers.count("HTTP/1.1 404 Not Found"), 1);
    }

    void anAbsoluteTargetIsTaken()
    {
        RunningService service;
        const QByteArray answer =
            test::exchangeRaw(service.port(), "GET http://talvenor.example/api/versions/latest "
                                              "HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        QCOMPARE(test::statusOf(answer), 200);
    }

    void stoppingLetsARunningRequestEndAndClosesIdleConnections()
    {
        RunningService service;
        const HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        test::RawConnection idle(service.port());
        QVERIFY(idle.send("GET /api/versions/latest HTTP/1.1\r\nHost: x\r\n\r\n"));
        QCOMPARE(test::statusOf(idle.readUntil("null}")), 200);
        test::RawConnection running(service.port());
        const QByteArray body = R"({"title":"x","duration":1})";
        running.send(
            "POST /api/auth/record HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\nAuthorization: Bearer " +
            client.token.toUtf8() + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n");
        // The service has begun with the request when it asks for the body.
        QCOMPARE(test::statusOf(running.readUntil("\r\n\r\n")), 100);
        std::thread stopping([&] { service.service().stop(); });
        QCOMPARE(idle.readAll(), QByteArray());
        const bool idleClosed = idle.isClosed();
        running.send(body);
        const QByteArray answer = running.readAll();
        stopping.join();
        QVERIFY(idleClosed);
        QCOMPARE(test::statusOf(answer), 201);
        QVERIFY(answer.contains("Connection: close"));
        QCOMPARE(client.get(QStringLiteral("/versions/latest")).status, 0); // Nobody is there any more.
    }
};

QTEST_GUILESS_MAIN(ServiceContractTest)
#include "ServiceContractTest.moc"
