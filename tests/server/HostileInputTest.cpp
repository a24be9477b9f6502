#include "RunningService.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <random>
#include <thread>
#include <vector>

using namespace talvenor;
using test::HttpAnswer;
using test::HttpClient;
using test::RawConnection;
using test::RunningService;

namespace {

const QString loginPath = QStringLiteral("/auth/login");

/// True if the service still answers.
bool isAlive(const RunningService &service)
{
    return service.client().get(QStringLiteral("/versions/latest")).status == 200;
}

QByteArray post(const QByteArray &path, const QByteArray &headers, const QByteArray &body)
{
    return "POST /api" + path + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" + headers + "\r\n" + body;
}

/// The body of a raw answer as JSON; every refusal must have a text in it.
QString errorOf(const QByteArray &rawAnswer)
{
    const QByteArray body = rawAnswer.mid(rawAnswer.indexOf("\r\n\r\n") + 4);
    return QJsonDocument::fromJson(body).object().value(QStringLiteral("error")).toString();
}

server::HttpLimits shortTimes()
{
    server::HttpLimits limits;
    limits.header = std::chrono::milliseconds(300);
    limits.body = std::chrono::milliseconds(300);
    limits.idle = std::chrono::milliseconds(300);
    return limits;
}

} // namespace

/// Input that means harm or makes no sense: refused or served right, and the service lives on.
class HostileInputTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsNoObjectIsRefused_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("cut short") << QByteArray("{\"email\":\"a@b.c\",\"password\":\"sec");
        QTest::newRow("array") << QByteArray(R"(["email"])");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("text") << QByteArray("\"email\"");
        QTest::newRow("number") << QByteArray("1e5");
        QTest::newRow("no value") << QByteArray(R"({"email":})");
        QTest::newRow("something behind") << QByteArray(R"({"email":"a@b.c","password":"secret"} x)");
        QTest::newRow("comment") << QByteArray("{\"email\":\"a@b.c\"/* */,\"password\":\"secret\"}");
        QTest::newRow("trailing comma") << QByteArray(R"({"email":"a@b.c","password":"secret",})");
        QTest::newRow("byte order mark")
            << QByteArray("\xEF\xBB\xBF{\"email\":\"a@b.c\",\"password\":\"secret\"}");
        QTest::newRow("NUL byte") << QByteArray("{\"email\":\"a@b.c\0\",\"password\":\"secret\"}", 39);
        QTest::newRow("invalid UTF-8") << QByteArray("{\"email\":\"\xC3\x28@b.c\",\"password\":\"secret\"}");
        QTest::newRow("overlong UTF-8") << QByteArray("{\"email\":\"\xC0\xAF@b.c\",\"password\":\"secret\"}");
        QTest::newRow("lone surrogate") << QByteArray(R"({"email":"\ud800@b.c","password":"secret"})");
        QTest::newRow("deep arrays") << QByteArray(50'000, '[');
        QTest::newRow("deep objects") << QByteArray("{\"a\":").repeated(10'000);
        QTest::newRow("deep inside") << "{\"a\":" + QByteArray(200, '[') + QByteArray(200, ']') + "}";
        QTest::newRow("zeros") << QByteArray(60'000, '\0');
        QTest::newRow("email as number") << QByteArray(R"({"email":1,"password":"secret"})");
        QTest::newRow("password as array") << QByteArray(R"({"email":"a@b.c","password":["secret"]})");
        QTest::newRow("password as object") << QByteArray(R"({"email":"a@b.c","password":{"$ne":""}})");
        QTest::newRow("password missing") << QByteArray(R"({"email":"a@b.c"})");
        QTest::newRow("keys in other case") << QByteArray(R"({"Email":"a@b.c","Password":"secret"})");
    }

    void whatIsNoObjectIsRefused()
    {
        QFETCH(QByteArray, body);
        RunningService service;
        service.signedIn(QStringLiteral("a@b.c"));
        const HttpAnswer answer = service.client().send("POST", loginPath, body);
        QCOMPARE(answer.status, 400);
        QVERIFY(!answer.error().isEmpty());
        QVERIFY(isAlive(service));
    }

    void hugeBodiesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<bool>("chunked");
        QTest::newRow("login") << QByteArray("/auth/login") << false;
        QTest::newRow("login in chunks") << QByteArray("/auth/login") << true;
        QTest::newRow("summary") << QByteArray("/summarize") << false;
        QTest::newRow("summary in chunks") << QByteArray("/summarize") << true;
    }

    void hugeBodiesAreRefused()
    {
        QFETCH(QByteArray, path);
        QFETCH(bool, chunked);
        RunningService service;
        const QByteArray body(10 * 1024 * 1024, 'x');
        QByteArray request;
        if (chunked) {
            const QByteArray chunk = "4000\r\n" + QByteArray(0x4000, 'x') + "\r\n";
            request = post(path, "Transfer-Encoding: chunked\r\n", chunk.repeated(640) + "0\r\n\r\n");
        } else {
            request = post(path, "Content-Length: " + QByteArray::number(body.size()) + "\r\n", body);
        }
        const QByteArray answer = test::exchangeRaw(service.port(), request);
        QCOMPARE(test::statusOf(answer), 413);
        QVERIFY(!errorOf(answer).isEmpty());
        QVERIFY(isAlive(service));
    }

    void aLongTranscriptIsTaken()
    {
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"), server::Tier::basic);
        QString transcript;
        for (int line = 0; line < 10'000; ++line)
            transcript += QStringLiteral("[%1:00] this is line number %2 about the topic of number %3\n")
                              .arg(line)
                              .arg(line)
                              .arg(line % 123);
        const HttpAnswer answer =
            client.post(QStringLiteral("/summarize"), {{QStringLiteral("transcript"), transcript},
                                                       {QStringLiteral("language"), QStringLiteral("en")}});
        QCOMPARE(answer.status, 200);
    }

    void badFramingIsRefused_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::newRow("no HTTP") << QByteArray("hello\r\n\r\n");
        QTest::newRow("TLS") << QByteArray("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11);
        QTest::newRow("HTTP/9") << QByteArray("GET /api/auth/me HTTP/9.9\r\n\r\n");
        QTest::newRow("negative length") << post("/auth/login", "Content-Length: -1\r\n", "{}");
        QTest::newRow("overflowing length")
            << post("/auth/login", "Content-Length: 99999999999999999999999\r\n", "{}");
        QTest::newRow("length as text") << post("/auth/login", "Content-Length: many\r\n", "{}");
        QTest::newRow("two lengths") << post("/auth/login", "Content-Length: 2\r\nContent-Length: 3\r\n",
                                             "{}");
        QTest::newRow("bad chunk size")
            << post("/auth/login", "Transfer-Encoding: chunked\r\n", "zz\r\n{}\r\n0\r\n\r\n");
        QTest::newRow("overflowing chunk")
            << post("/auth/login", "Transfer-Encoding: chunked\r\n", "ffffffffffffffffff\r\n{}\r\n0\r\n\r\n");
        QTest::newRow("blank in a name") << QByteArray("GET /api/auth/me HTTP/1.1\r\nBad Name: x\r\n\r\n");
        QTest::newRow("NUL in a header") << QByteArray("GET /api/auth/me HTTP/1.1\r\nX: a\0b\r\n\r\n", 37);
        QTest::newRow("folded header") << QByteArray("GET /api/auth/me HTTP/1.1\r\nnocolon\r\n\r\n");
    }

    void badFramingIsRefused()
    {
        QFETCH(QByteArray, request);
        RunningService service;
        RawConnection connection(service.port());
        connection.send(request);
        connection.finishSending();
        const QByteArray answer = connection.readAll();
        QVERIFY(connection.isClosed());
        const int status = test::statusOf(answer);
        QVERIFY2(status == 400 || status == 413, answer.constData());
        QVERIFY(!errorOf(answer).isEmpty());
        QVERIFY(isAlive(service));
    }

    void headersAreBounded_data()
    {
        QTest::addColumn<QByteArray>("request");
        const QByteArray start = "GET /api/auth/me HTTP/1.1\r\nHost: x\r\n";
        QTest::newRow("many") << start + QByteArray("X-Y: z\r\n").repeated(100'000) + "\r\n";
        QTest::newRow("one long value") << start + "X: " + QByteArray(1'000'000, 'v') + "\r\n\r\n";
        QTest::newRow("one long name") << start + QByteArray(1'000'000, 'n') + ": v\r\n\r\n";
        QTest::newRow("long target") << "GET /" + QByteArray(1'000'000, 'p') + " HTTP/1.1\r\n\r\n";
        QTest::newRow("long method") << QByteArray(1'000'000, 'M') + " / HTTP/1.1\r\n\r\n";
    }

    void headersAreBounded()
    {
        QFETCH(QByteArray, request);
        RunningService service;
        const QByteArray answer = test::exchangeRaw(service.port(), request);
        QCOMPARE(test::statusOf(answer), 431);
        QVERIFY(!errorOf(answer).isEmpty());
        QVERIFY(isAlive(service));
    }

    void aSlowHeaderIsCutOff()
    {
        RunningService service(shortTimes());
        RawConnection slow(service.port());
        QVERIFY(slow.send("GET /api/versions/latest HTTP/1.1\r\n"));
        QVERIFY(isAlive(service)); // Others do not wait for it.
        // A byte now and then buys no time: the limit is for the whole header.
        QElapsedTimer clock;
        clock.start();
        while (!slow.isClosed() && clock.elapsed() < 20'000) {
            slow.send("X");
            slow.readAll(50);
        }
        QVERIFY(slow.isClosed());
    }

    void aSlowBodyIsCutOff()
    {
        RunningService service(shortTimes());
        RawConnection slow(service.port());
        QVERIFY(slow.send(post("/auth/login", "Content-Length: 1000\r\n", "{")));
        QElapsedTimer clock;
        clock.start();
        while (!slow.isClosed() && clock.elapsed() < 20'000) {
            slow.send(" ");
            slow.readAll(50);
        }
        QVERIFY(slow.isClosed());
        QVERIFY(isAlive(service));
    }

    void anIdleConnectionEnds()
    {
        RunningService service(shortTimes());
        RawConnection idle(service.port());
        QCOMPARE(idle.readAll(20'000), QByteArray());
        QVERIFY(idle.isClosed());
    }

    void aBodyThatBreaksOffIsNotCarriedOut()
    {
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        {
            RawConnection connection(service.port());
            connection.send(
                post("/auth/record",
                     "Authorization: Bearer " + client.token.toUtf8() + "\r\nContent-Length: 27\r\n",
                     R"({"title":"x","duration":1})")); // one byte short
            connection.finishSending();
            QCOMPARE(connection.readAll(), QByteArray());
            QVERIFY(connection.isClosed());
        }
        QCOMPARE(client.get(QStringLiteral("/auth/me")).object()[u"recordings_count"].toInteger(-1), 0);
    }

    void aClientThatHasFinishedSendingIsAnswered()
    {
        RunningService service;
        RawConnection connection(service.port());
        connection.send("GET /api/versions/latest HTTP/1.1\r\nHost: x\r\n\r\n");
        connection.finishSending();
        QCOMPARE(test::statusOf(connection.readAll()), 200);
    }

    void tooManyConnectionsWaitTheirTurn()
    {
        server::HttpLimits limits;
        limits.connections = 4;
        RunningService service(limits);
        std::vector<std::unique_ptr<RawConnection>> held;
        for (int index = 0; index < 4; ++index) {
            held.push_back(std::make_unique<RawConnection>(service.port()));
            held.back()->send("GET /api/versions/latest HTTP/1.1\r\nHost: x\r\n\r\n");
            QCOMPARE(test::statusOf(held.back()->readUntil("null}")), 200);
        }
        RawConnection waiting(service.port());
        waiting.send("GET /api/versions/latest HTTP/1.1\r\nHost: x\r\n\r\n");
        QCOMPARE(waiting.readUntil("null}", 200), QByteArray());
        held.pop_back();
        QCOMPARE(test::statusOf(waiting.readUntil("null}")), 200);
    }

    void textsAreDataOnly_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("quote") << QStringLiteral("' OR '1'='1");
        QTest::newRow("statement") << QStringLiteral("'); DROP TABLE accounts; --");
        QTest::newRow("placeholder") << QStringLiteral("?1 :a @b $c %s %n {0}");
        QTest::newRow("JSON") << QStringLiteral("\",\"role\":\"admin\",\"x\":\"");
        QTest::newRow("markup") << QStringLiteral("<script>alert(1)</script>");
        QTest::newRow("right to left") << QStringLiteral("\u202Eabc\u202C");
        QTest::newRow("non-characters") << QStringLiteral("\uFFFE\uFDD0");
        QTest::newRow("a hundred emoji") << QStringLiteral("😀").repeated(100);
    }

    void textsAreDataOnly()
    {
        QFETCH(QString, text);
        RunningService service;
        HttpClient client = service.signedIn(QStringLiteral("a@b.c"));
        const HttpAnswer answer =
            client.put(QStringLiteral("/auth/profile"), {{QStringLiteral("name"), text}});
        QCOMPARE(answer.status, 200);
        const QJsonObject profile = client.get(QStringLiteral("/auth/me")).object();
        QCOMPARE(profile[u"name"].toString(), text);
        QCOMPARE(profile[u"role"].toString(), QStringLiteral("user"));
        QCOMPARE(client
                     .post(QStringLiteral("/auth/record"),
                           {{QStringLiteral("title"), text.repeated(30)}, {QStringLiteral("duration"), 1}})
                     .status,
                 201);
        HttpClient other = service.client();
        const int login =
            other.post(loginPath, {{QStringLiteral("email"), text}, {QStringLiteral("password"), text}})
                .status;
        QCOMPARE(login, 401);
        other.token = text.simplified();
        QCOMPARE(other.get(QStringLiteral("/auth/me")).status, 401);
    }

    void oneTokenServesManyAtOnce()
    {
        RunningService service;
        const QString token = service.signedIn(QStringLiteral("a@b.c")).token;
        std::atomic<int> right = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < 16; ++index) {
            threads.emplace_back([&, index] {
                HttpClient client = service.client();
                client.token = token;
                for (int count = 0; count < 10; ++count) {
                    const HttpAnswer answer =
                        index % 2 == 0
                            ? client.get(QStringLiteral("/auth/me"))
                            : client.put(QStringLiteral("/auth/profile"),
                                         {{QStringLiteral("name"), QStringLiteral("Name %1").arg(index)}});
                    right += answer.status == 200 ? 1 : 0;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(right.load(), 160);
    }

    void aFloodOfLoginsLeavesProfilesAlone()
    {
        RunningService service;
        const QString token = service.signedIn(QStringLiteral("a@b.c")).token;
        std::atomic<int> answered = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < 24; ++index) {
            threads.emplace_back([&, index] {
                const HttpClient client = service.client();
                const int status =
                    client
                        .post(loginPath, {{QStringLiteral("email"), QStringLiteral("x%1@b.c").arg(index)},
                                          {QStringLiteral("password"), QStringLiteral("wrong1")}})
                        .status;
                answered += status == 401 || status == 503 ? 1 : 0;
            });
        }
        HttpClient client = service.client();
        client.token = token;
        for (int count = 0; count < 20; ++count)
            QCOMPARE(client.get(QStringLiteral("/auth/me")).status, 200);
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(answered.load(), 24);
    }

    void mutatedRequestsDoNoHarm()
    {
        server::HttpLimits limits = shortTimes();
        RunningService service(limits);
        const QByteArray seed =
            post("/auth/login",
                 "Accept-Language: de;q=0.5,en\r\nAuthorization: Bearer abc\r\nContent-Length: 42\r\n",
                 R"({"email":"a@b.c","password":"secret","x":1})");
        std::mt19937 random(20260101); // the same every time
        for (int round = 0; round < 400; ++round) {
            QByteArray request = seed;
            const int changes = 1 + static_cast<int>(random() % 8);
            for (int change = 0; change < changes; ++change) {
                const auto position =
                    static_cast<qsizetype>(random() % static_cast<unsigned>(request.size()));
                switch (random() % 3) {
                case 0:
                    request[position] = static_cast<char>(random() % 256);
                    break;
                case 1:
                    request.remove(position, static_cast<qsizetype>(random() % 8));
                    break;
                default:
                    request.insert(position, request.mid(static_cast<qsizetype>(random() % 64), 16));
                }
                if (request.isEmpty())
                    request = "x";
            }
            RawConnection connection(service.port());
            connection.send(request);
            connection.finishSending();
            const QByteArray answer = connection.readAll(20'000);
            QVERIFY2(connection.isClosed(), request.constData());
            const int status = test::statusOf(answer);
            QVERIFY2(answer.isEmpty() || (status >= 400 && status < 500), answer.constData());
        }
        QVERIFY(isAlive(service));
    }
};

QTEST_GUILESS_MAIN(HostileInputTest)
#include "HostileInputTest.moc"
