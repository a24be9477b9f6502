#include "platform/linux/network/CurlTransport.h"
#include "foundation/LocalizedError.h"
#include "support/Await.h"
#include "support/HttpTestServer.h"

#include <curl/curl.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>

#include <unistd.h>

#include <cstdlib>

using namespace talvenor;
using namespace std::chrono_literals;
using test::await;
using test::HttpTestAnswer;
using test::HttpTestServer;
using Conduct = HttpTestAnswer::Conduct;

namespace {

HttpRequest requestTo(const QString &url, const QByteArray &method = "GET",
                      std::optional<QByteArray> body = std::nullopt)
{
    HttpRequest request;
    request.method = method;
    request.url = url;
    request.body = std::move(body);
    return request;
}

/// The libcurl code of the failure of a request; 0 if it did not fail as it should.
int failureOf(HttpTransport &transport, HttpRequest request)
{
    try {
        await(transport.send(std::move(request)));
    } catch (const PlatformError &error) {
        if (error.domain() == QStringLiteral("network") && !error.errorDescription().isEmpty())
            return error.code();
    }
    return 0;
}

qsizetype openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::AllEntries).size();
}

/// Counts how often the event loop of this thread comes round.
class Ticks : public QTimer
{
public:
    Ticks()
    {
        connect(this, &QTimer::timeout, this, [this] { ++count; });
        start(5ms);
    }
    int count = 0;
};

} // namespace

/// The transport against a real server on the loopback interface.
class CurlTransportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRequestArrivesAsItWasWritten()
    {
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::json(201, R"({"ok":true})"));
        HttpRequest request = requestTo(server.url() + QStringLiteral("/a/b?c=d"), "POST",
                                        QByteArrayLiteral("{\"x\":\"\xc3\xa4\"}"));
        request.headers = {
            {"Content-Type", "application/json"}, {"Authorization", "Bearer abc"}, {"X-Empty", ""}};
        CurlTransport transport;
        const HttpResponse response = await(transport.send(request));
        QCOMPARE(response.statusCode, 201);
        QCOMPARE(response.body, QByteArrayLiteral("{\"ok\":true}"));

        QCOMPARE(server.requests().size(), 1);
        const auto seen = server.requests().constFirst();
        QCOMPARE(seen.method, "POST");
        QCOMPARE(seen.target, "/a/b?c=d");
        QCOMPARE(seen.version, "HTTP/1.1");
        QCOMPARE(seen.body, *request.body);
        QCOMPARE(seen.header("Content-Type"), "application/json");
        QCOMPARE(seen.header("Authorization"), "Bearer abc");
        QCOMPARE(seen.header("X-Empty"), "");
        for (const char *const absent : {"Cookie", "Expect", "Transfer-Encoding", "If-None-Match", "Upgrade"})
            QVERIFY2(!seen.header(absent), absent);
    }

    void aBodyOrItsAbsenceGoesWithAnyMethod_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("body"); // null: none
        QTest::addColumn<QByteArray>("length");
        QTest::newRow("GET") << QByteArray("GET") << QByteArray() << QByteArray();
        QTest::newRow("DELETE") << QByteArray("DELETE") << QByteArray() << QByteArray();
        QTest::newRow("POST without") << QByteArray("POST") << QByteArray() << QByteArray("0");
        QTest::newRow("PUT without") << QByteArray("PUT") << QByteArray() << QByteArray("0");
        QTest::newRow("PUT") << QByteArray("PUT") << QByteArray("{}") << QByteArray("2");
        QTest::newRow("DELETE with") << QByteArray("DELETE") << QByteArray("{}") << QByteArray("2");
        QTest::newRow("zero bytes inside") << QByteArray("POST") << QByteArray("a\0b", 3) << QByteArray("3");
    }

    void aBodyOrItsAbsenceGoesWithAnyMethod()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, length);
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::json(200, "{}"));
        CurlTransport transport;
        await(transport.send(
            requestTo(server.url(), method, body.isNull() ? std::nullopt : std::optional(body))));
        QCOMPARE(server.requests().size(), 1);
        const auto seen = server.requests().constFirst();
        QCOMPARE(seen.method, method);
        QCOMPARE(seen.body, body);
        QCOMPARE(seen.header("Content-Length").value_or(QByteArray()), length);
        QVERIFY(!seen.header("Content-Type")); // nobody has asked for one
    }

    void aLargeBodyIsSentAtOnce()
    {
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::json(200, "{}"));
        const QByteArray body(4 * 1024 * 1024, 'x');
        CurlTransport transport;
        QCOMPARE(await(transport.send(requestTo(server.url(), "POST", body))).statusCode, 200);
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(server.requests().constFirst().body.size(), body.size());
        QVERIFY(!server.requests().constFirst().header("Expect"));
    }

    void thePathIsSentVerbatim_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("none") << QString() << QByteArray("/");
        QTest::newRow("double slash") << QStringLiteral("/api//auth/login") << QByteArray("/api//auth/login");
        QTest::newRow("leading double slash") << QStringLiteral("//auth/me") << QByteArray("//auth/me");
        QTest::newRow("dots") << QStringLiteral("/a/../b/./c") << QByteArray("/a/../b/./c");
        QTest::newRow("letters beyond ASCII") << QStringLiteral("/ä") << QByteArray("/%C3%A4");
    }

    void thePathIsSentVerbatim()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, target);
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::json(200, "{}"));
        CurlTransport transport;
        await(transport.send(requestTo(server.url() + path)));
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(server.requests().constFirst().target, target);
    }

    void eachRequestHasItsOwnConnectionAndNoCookies()
    {
        HttpTestServer server;
        HttpTestAnswer answer = HttpTestAnswer::json(200, "{}");
        answer.headers = {{"Set-Cookie", "session=1; Path=/"},
                          {"Cache-Control", "public, max-age=3600"},
                          {"ETag", "\"x\""},
                          {"Connection", "keep-alive"}};
        server.setHandler([answer](const auto &) { return answer; });
        CurlTransport transport;
        for (int i = 0; i < 3; ++i)
            QCOMPARE(await(transport.send(requestTo(server.url() + QStringLiteral("/same")))).statusCode,
                     200);
        QCOMPARE(server.requests().size(), 3);
        QCOMPARE(server.connectionCount(), 3);
        for (const auto &request : server.requests()) {
            QVERIFY(!request.header("Cookie"));
            QVERIFY(!request.header("If-None-Match"));
        }
        QVERIFY(test::waitUntil([&] { return server.openConnectionCount() == 0; }));
    }

    void everyStatusIsAnAnswer_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {200, 201, 202, 204, 301, 302, 304, 307, 308, 400, 401, 403,
                                 404, 407, 409, 417, 421, 425, 429, 500, 502, 503, 599})
            QTest::addRow("%d", status) << status;
    }

    void everyStatusIsAnAnswer()
    {
        QFETCH(int, status);
        HttpTestServer other;
        HttpTestServer server;
        HttpTestAnswer answer = HttpTestAnswer::json(status, status == 304 ? "" : "{}");
        // What might tempt a client to ask again, here or elsewhere.
        answer.headers = {{"Location", other.url().toLatin1() + "/elsewhere"},
                          {"Retry-After", "0"},
                          {"WWW-Authenticate", "Basic realm=\"x\""},
                          {"Proxy-Authenticate", "Basic realm=\"x\""}};
        server.setHandler([answer](const auto &) { return answer; });
        CurlTransport transport;
        QCOMPARE(await(transport.send(requestTo(server.url(), "POST", "{}"))).statusCode, status);
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(other.connectionCount(), 0);
    }

    void anAnswerMayComeByteByByte()
    {
        HttpTestServer server;
        HttpTestAnswer answer = HttpTestAnswer::of(Conduct::byteAtATime, R"({"slow":"but complete"})");
        answer.pause = 2ms;
        server.enqueue(answer);
        const Ticks ticks;
        CurlTransport transport;
        const HttpResponse response = await(transport.send(requestTo(server.url())));
        QCOMPARE(response.statusCode, 200);
        QCOMPARE(response.body, answer.body);
        QVERIFY2(ticks.count > 1, "the event loop stood still meanwhile");
    }

    void aBrokenAnswerIsOneFailureAndOneRequest_data()
    {
        QTest::addColumn<Conduct>("conduct");
        QTest::addColumn<int>("code");
        QTest::newRow("before the answer") << Conduct::dropBeforeAnswer << int(CURLE_GOT_NOTHING);
        QTest::newRow("within the head") << Conduct::dropWithinHead << int(CURLE_GOT_NOTHING);
        QTest::newRow("within the body") << Conduct::dropWithinBody << int(CURLE_PARTIAL_FILE);
    }

    void aBrokenAnswerIsOneFailureAndOneRequest()
    {
        QFETCH(Conduct, conduct);
        QFETCH(int, code);
        HttpTestServer server;
        server.setHandler([conduct](const auto &) { return HttpTestAnswer::of(conduct, "0123456789"); });
        CurlTransport transport;
        QCOMPARE(failureOf(transport, requestTo(server.url(), "POST", "{\"pay\":\"once\"}")), code);
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(server.connectionCount(), 1);
    }

    void whatIsNoHttpHasNoStatus_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("another protocol") << QByteArray("SSH-2.0-OpenSSH_9.2\r\n");
        QTest::newRow("binary") << QByteArray("\x00\x01\xff\xfe\x15\x03\x01\x00\x02\x02", 10).repeated(100);
        QTest::newRow("a bare page") << QByteArray("<html><body>hello</body></html>\n");
        QTest::newRow("a version from the future")
            << QByteArray("HTTP/9.9 200 OK\r\nContent-Length: 0\r\n\r\n");
        QTest::newRow("no status") << QByteArray("HTTP/1.1 fine\r\nContent-Length: 0\r\n\r\n");
    }

    void whatIsNoHttpHasNoStatus()
    {
        QFETCH(QByteArray, bytes);
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::of(Conduct::raw, bytes));
        CurlTransport transport;
        QCOMPARE(await(transport.send(requestTo(server.url()))).statusCode, 0);
        QCOMPARE(server.requests().size(), 1);
    }

    void aServerThatNeverAnswersIsGivenUp_data()
    {
        QTest::addColumn<bool>("trickles");
        QTest::newRow("silent") << false;
        QTest::newRow("for ever in the middle") << true;
    }

    void aServerThatNeverAnswersIsGivenUp()
    {
        QFETCH(bool, trickles);
        HttpTestServer server;
        HttpTestAnswer answer = HttpTestAnswer::of(trickles ? Conduct::byteAtATime : Conduct::neverAnswer,
                                                   QByteArray(100000, ' '));
        answer.pause = 1ms;
        server.enqueue(answer);
        HttpRequest request = requestTo(server.url());
        request.timeout = 300ms;
        const Ticks ticks;
        CurlTransport transport;
        QCOMPARE(failureOf(transport, request), int(CURLE_OPERATION_TIMEDOUT));
        QVERIFY2(ticks.count > 1, "the event loop stood still meanwhile");
        QCOMPARE(server.requests().size(), 1);
        QVERIFY(test::waitUntil([&] { return server.openConnectionCount() == 0; }));
    }

    void aHungServerHoldsUpNobodyElse()
    {
        HttpTestServer server;
        server.setHandler([](const test::HttpTestRequest &request) {
            return request.target == "/hung" ? HttpTestAnswer::of(Conduct::neverAnswer)
                                             : HttpTestAnswer::json(200, "{}");
        });
        CurlTransport transport;
        HttpRequest hung = requestTo(server.url() + QStringLiteral("/hung"));
        hung.timeout = 2s;
        std::vector<Task<HttpResponse>> pending;
        for (int i = 0; i < 8; ++i)
            pending.push_back(transport.send(hung));
        QCOMPARE(await(transport.send(requestTo(server.url()))).statusCode, 200);
        QVERIFY(
            std::none_of(pending.begin(), pending.end(), [](const auto &task) { return task.isReady(); }));
        for (auto &task : pending) {
            try {
                await(std::move(task));
                QFAIL("a hung server has answered");
            } catch (const PlatformError &error) {
                QCOMPARE(error.code(), int(CURLE_OPERATION_TIMEDOUT));
            }
        }
    }

    void anAnswerBeyondTheLimitIsAnError_data()
    {
        QTest::addColumn<Conduct>("conduct");
        QTest::newRow("announced") << Conduct::complete;
        QTest::newRow("unannounced and endless") << Conduct::endless;
    }

    void anAnswerBeyondTheLimitIsAnError()
    {
        QFETCH(Conduct, conduct);
        const CurlTransportLimits limits; // the ones of the program
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::of(
            conduct, QByteArray(conduct == Conduct::complete ? limits.maximumAnswerBytes + 1 : 65536, '[')));
        CurlTransport transport(limits);
        QCOMPARE(failureOf(transport, requestTo(server.url())), int(CURLE_FILESIZE_EXCEEDED));
        QVERIFY(test::waitUntil([&] { return server.openConnectionCount() == 0; }));
    }

    void anAnswerAtTheLimitIsTaken()
    {
        CurlTransportLimits limits;
        limits.maximumAnswerBytes = 100000;
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::json(200, QByteArray(100000, 'x')));
        CurlTransport transport(limits);
        QCOMPARE(await(transport.send(requestTo(server.url()))).body.size(), 100000);
    }

    void headersWithoutEndAreAnError()
    {
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::of(
            Conduct::raw, "HTTP/1.1 200 OK\r\n" +
                              QByteArray("X-Filler: " + QByteArray(1000, 'x') + "\r\n").repeated(2000)));
        CurlTransport transport;
        QCOMPARE(failureOf(transport, requestTo(server.url())), int(CURLE_FILESIZE_EXCEEDED));
    }

    void aServerThatIsNotThereIsAFailure()
    {
        QString url;
        {
            const HttpTestServer gone;
            url = gone.url();
        }
        CurlTransport transport;
        QCOMPARE(failureOf(transport, requestTo(url)), int(CURLE_COULDNT_CONNECT));
    }

    void aNameThatDoesNotExistIsAFailure()
    {
        CurlTransport transport;
        // Reserved for this by RFC 6761; no name server is asked for what ends in it by a careful resolver,
        // and none knows it.
        QCOMPARE(failureOf(transport, requestTo(QStringLiteral("http://service.talvenor.invalid/api"))),
                 int(CURLE_COULDNT_RESOLVE_HOST));
    }

    void aHeaderCannotSmuggleLines_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("line feed") << QByteArray("Authorization") << QByteArray("Bearer a\nX-Admin: yes");
        QTest::newRow("carriage return")
            << QByteArray("Authorization") << QByteArray("Bearer a\r\n\r\nGET /");
        QTest::newRow("zero byte") << QByteArray("Authorization") << QByteArray("Bearer a\0b", 10);
        QTest::newRow("name") << QByteArray("X: y\r\nX-Admin") << QByteArray("yes");
        QTest::newRow("no name") << QByteArray() << QByteArray("yes");
    }

    void aHeaderCannotSmuggleLines()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, value);
        HttpTestServer server;
        HttpRequest request = requestTo(server.url());
        request.headers = {{name, value}};
        CurlTransport transport;
        QCOMPARE(failureOf(transport, request), int(CURLE_BAD_FUNCTION_ARGUMENT));
        QCOMPARE(server.connectionCount(), 0);
    }

    void theEnvironmentsProxyIsNotUsed()
    {
        HttpTestServer proxy;
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::json(200, "{}"));
        qputenv("http_proxy", proxy.url().toLatin1());
        qputenv("ALL_PROXY", proxy.url().toLatin1());
        CurlTransport transport;
        const int status = await(transport.send(requestTo(server.url()))).statusCode;
        qunsetenv("http_proxy");
        qunsetenv("ALL_PROXY");
        QCOMPARE(status, 200);
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(proxy.connectionCount(), 0);
    }

    void anAddressIsValidIfItCanBeSentTo_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("isValid");
        QTest::newRow("https") << QStringLiteral("https://service.talvenor.invalid/api/auth/me") << true;
        QTest::newRow("port") << QStringLiteral("http://127.0.0.1:8080/auth/me") << true;
        QTest::newRow("IPv6") << QStringLiteral("http://[::1]:8080/auth/me") << true;
        QTest::newRow("double slash") << QStringLiteral("http://localhost//auth/me") << true;
        QTest::newRow("capital scheme") << QStringLiteral("HTTP://localhost/x") << true;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("path alone") << QStringLiteral("/auth/me") << false;
        QTest::newRow("no scheme") << QStringLiteral("localhost:8080/auth/me") << false;
        QTest::newRow("no host") << QStringLiteral("http:///auth/me") << false;
        QTest::newRow("space in the host") << QStringLiteral("http://my host/auth/me") << false;
        QTest::newRow("space in the path") << QStringLiteral("http://host/a b/auth/me") << false;
        QTest::newRow("leading space") << QStringLiteral(" http://host/auth/me") << false;
        QTest::newRow("bad port") << QStringLiteral("http://host:99999/auth/me") << false;
        QTest::newRow("file") << QStringLiteral("file:///etc/passwd") << false;
        QTest::newRow("ftp") << QStringLiteral("ftp://host/auth/me") << false;
        QTest::newRow("line feed") << QStringLiteral("http://host/a\nb") << false;
    }

    void anAddressIsValidIfItCanBeSentTo()
    {
        QFETCH(QString, url);
        QFETCH(bool, isValid);
        const CurlTransport transport;
        QCOMPARE(transport.isValidUrl(url), isValid);
    }

    void failuresLeaveNothingBehind()
    {
        HttpTestServer server;
        CurlTransport transport;
        const auto round = [&] {
            for (const Conduct conduct : {Conduct::dropBeforeAnswer, Conduct::dropWithinBody,
                                          Conduct::neverAnswer, Conduct::raw, Conduct::complete}) {
                server.enqueue(HttpTestAnswer::of(conduct, "garbage"));
                HttpRequest request = requestTo(server.url());
                request.timeout = 50ms;
                (void)failureOf(transport, request);
            }
            return test::waitUntil([&] { return server.openConnectionCount() == 0; });
        };
        QVERIFY(round()); // has what is made once made
        const auto before = openFiles();
        for (int i = 0; i < 5; ++i)
            QVERIFY(round());
        QCOMPARE(openFiles(), before);
    }

    void theEndOfTheProgramDoesNotWaitForAnAnswer_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("the event loop ends") << QStringLiteral("--return");
        QTest::newRow("exit is called") << QStringLiteral("--exit");
    }

    void theEndOfTheProgramDoesNotWaitForAnAnswer()
    {
        QFETCH(QString, way);
        HttpTestServer server;
        server.enqueue(HttpTestAnswer::of(Conduct::neverAnswer));
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QCoreApplication::applicationFilePath(), {way, server.url()});
        QVERIFY(test::waitUntil([&] { return server.requests().size() == 1; }));
        QElapsedTimer timer;
        timer.start();
        program.closeWriteChannel(); // the sign to end
        QVERIFY(program.waitForFinished(20'000));
        QVERIFY2(timer.elapsed() < 15'000, "the program has waited for the request's 30 seconds");
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }
};

/// The program that the last test ends while a request of it is open.
static int runWithOpenRequest(QCoreApplication &application, const QString &way)
{
    CurlTransport transport;
    startTask(&application, [&transport]() -> Task<> {
        try {
            co_await transport.send(requestTo(QCoreApplication::arguments().at(2)));
        } catch (const PlatformError &) {
            // Nobody is left to be told.
        }
    });
    QSocketNotifier endSign(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&endSign, &QSocketNotifier::activated, &application, [way] {
        if (way == QLatin1StringView("--exit"))
            std::exit(0);
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && QByteArray(argv[1]).startsWith("--"))
        return runWithOpenRequest(application, QString::fromLatin1(argv[1]));
    CurlTransportTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "CurlTransportTest.moc"
