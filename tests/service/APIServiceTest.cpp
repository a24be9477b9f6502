#include "ServiceTestAccess.h"
#include "foundation/LocalizedError.h"
#include "platform/linux/network/LinuxNetwork.h"
#include "settings/AppSettings.h"
#include "support/Await.h"
#include "support/HttpTestServer.h"
#include "support/LogCapture.h"

#include <QTest>
#include <QTimer>

#include <limits>

using namespace talvenor;
using namespace std::chrono_literals;
using test::await;
using test::HttpTestAnswer;
using test::HttpTestServer;
using Conduct = HttpTestAnswer::Conduct;

namespace {

const QByteArray kProfile = R"({"id":1,"email":"a@b.de","name":"A","role":"user","subscription_tier":"free",
    "recordings_count":0})";

/// Notes requests and answers all of them in one way, without a network.
class NotingTransport : public HttpTransport
{
public:
    [[nodiscard]] bool isValidUrl(const QString &) const override { return true; }
    Task<HttpResponse> send(HttpRequest request) override
    {
        requests.append(request);
        co_return HttpResponse(response); // QCoro 0.8 would move the member away
    }

    QList<HttpRequest> requests;
    HttpResponse response{200, kProfile};
};

/// How an operation has failed: the case of the APIError and what the user reads.
struct Failure
{
    std::optional<APIError::Case> errorCase; ///< absent if nothing failed or it was no APIError
    QString text;
    std::optional<int> platformCode; ///< of a PlatformError
};

template<typename T>
Failure failureOf(Task<T> task)
{
    try {
        await(std::move(task));
    } catch (const APIError &error) {
        return {error.errorCase(), error.errorDescription(), std::nullopt};
    } catch (const PlatformError &error) {
        return {std::nullopt, error.errorDescription(), error.code()};
    }
    return {};
}

} // namespace

Q_DECLARE_METATYPE(talvenor::APIError::Case)

/// The way of one request, against a real server and a real secret store.
class APIServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installLinuxNetwork(Platform::shared()); }

    void init()
    {
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        m_server = std::make_unique<HttpTestServer>();
        m_api = serviceAt(m_server->url().toUtf8() + "/api");
        test::removeToken();
    }

    void aRequestHasTheseHeaders()
    {
        m_server->setHandler([](const auto &) { return HttpTestAnswer::json(200, kProfile); });
        test::storeToken("secret.token");
        await(m_api->fetchProfile());
        await(m_api->updateProfile(QStringLiteral("B")));
        const auto requests = m_server->requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests.at(0).method, "GET");
        QCOMPARE(requests.at(0).target, "/api/auth/me");
        QCOMPARE(requests.at(0).body, QByteArray());
        QCOMPARE(requests.at(1).method, "PUT");
        for (const auto &request : requests) {
            QCOMPARE(request.header("Content-Type"), "application/json"); // with or without a body
            QCOMPARE(request.header("Authorization"), "Bearer secret.token");
            QVERIFY(!request.header("Cookie"));
        }
    }

    void eachRequestHasThirtySeconds()
    {
        const auto network =
            std::exchange(Platform::shared().httpTransport, std::make_shared<NotingTransport>());
        const auto noting = std::static_pointer_cast<NotingTransport>(Platform::shared().httpTransport);
        await(m_api->fetchProfile());
        await(m_api->updateProfile(QStringLiteral("x")));
        Platform::shared().httpTransport = network;
        QCOMPARE(noting->requests.size(), 2);
        for (const HttpRequest &request : noting->requests)
            QCOMPARE(request.timeout, 30s);
    }

    void everyStatusEndsAsTold_data()
    {
        using Case = APIError::Case;
        QTest::addColumn<int>("status");
        QTest::addColumn<std::optional<APIError::Case>>("errorCase");
        for (const int status : {200, 201})
            QTest::addRow("%d", status) << status << std::optional<Case>();
        QTest::newRow("401") << 401 << std::optional(Case::unauthorized);
        QTest::newRow("403") << 403 << std::optional(Case::forbidden);
        for (const int status : {400, 409})
            QTest::addRow("%d", status) << status << std::optional(Case::badRequest);
        for (const int status : {202, 203, 204, 206, 301, 302, 303, 304, 307, 308, 402, 404, 405, 408,
                                 410, 417, 418, 422, 425, 429, 451, 499, 500, 501, 502, 503, 504, 599})
            QTest::addRow("%d", status) << status << std::optional(Case::serverError);
    }

    void everyStatusEndsAsTold()
    {
        QFETCH(int, status);
        QFETCH(std::optional<APIError::Case>, errorCase);
        test::storeToken("token");
        HttpTestAnswer answer =
            HttpTestAnswer::json(status, errorCase ? "{\"error\":\"the service's words\"}" : kProfile);
        if (status == 304)
            answer.body.clear(); // it never has one
        answer.headers = {{"Location", m_server->url().toLatin1() + "/elsewhere"}};
        m_server->setHandler([answer](const auto &) { return answer; });
        const Failure failure = failureOf(m_api->fetchProfile());
        QCOMPARE(failure.errorCase, errorCase);
        QVERIFY(!failure.platformCode);
        if (errorCase == APIError::Case::unauthorized)
            QCOMPARE(failure.text, QStringLiteral("Session expired. Please log in again."));
        else if (errorCase)
            QCOMPARE(failure.text, status == 204 || status == 304 ? QStringLiteral("Unknown error")
                                                                  : QStringLiteral("the service's words"));
        QCOMPARE(m_server->requests().size(), 1); // once, and not at the other place
        QCOMPARE(m_api->isLoggedIn(), status != 401);
    }

    void theServicesWordsAreTakenFromOneKeyAlone_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        const QString unknown = QStringLiteral("Unknown error");
        QTest::newRow("told") << QByteArray("{\"error\":\"E-Mail vergeben ä\",\"message\":\"other\"}")
                              << QStringLiteral("E-Mail vergeben ä");
        QTest::newRow("empty text") << QByteArray("{\"error\":\"\"}") << QString();
        QTest::newRow("another key") << QByteArray("{\"message\":\"no\"}") << unknown;
        QTest::newRow("number") << QByteArray("{\"error\":5}") << unknown;
        QTest::newRow("object") << QByteArray("{\"error\":{\"error\":\"x\"}}") << unknown;
        QTest::newRow("null") << QByteArray("{\"error\":null}") << unknown;
        QTest::newRow("array") << QByteArray("[{\"error\":\"x\"}]") << unknown;
        QTest::newRow("bare text") << QByteArray("\"error\"") << unknown;
        QTest::newRow("html") << QByteArray("<html>500</html>") << unknown;
        QTest::newRow("none") << QByteArray() << unknown;
        QTest::newRow("nested beyond reason") << QByteArray(1000000, '[') << unknown;
    }

    void theServicesWordsAreTakenFromOneKeyAlone()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, text);
        for (const int status : {400, 403, 409, 500}) {
            m_server->enqueue(HttpTestAnswer::json(status, body));
            QCOMPARE(failureOf(m_api->fetchProfile()).text, text);
        }
    }

    void a401DeletesTheTokenWhateverTheRequest()
    {
        m_server->setHandler(
            [](const auto &) { return HttpTestAnswer::json(401, "{\"error\":\"wrong password\"}"); });
        const QString expired = QStringLiteral("Session expired. Please log in again.");
        test::storeToken("old");
        const Failure login = failureOf(m_api->login(QStringLiteral("a"), QStringLiteral("b")));
        QCOMPARE(login.errorCase, APIError::Case::unauthorized);
        QCOMPARE(login.text, expired); // not the service's words
        QVERIFY(!test::storedToken());
        test::storeToken("old");
        QCOMPARE(failureOf(m_api->checkForUpdate()).text, expired);
        QVERIFY(!test::storedToken());
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(failureOf(m_api->fetchAdminUsers()).text,
                 QStringLiteral("Sitzung abgelaufen. Bitte erneut anmelden."));
    }

    void otherFailuresLeaveTheToken()
    {
        test::storeToken("token");
        for (const int status : {400, 403, 404, 409, 500, 200}) {
            m_server->enqueue(HttpTestAnswer::json(status, "nonsense"));
            QVERIFY(failureOf(m_api->fetchProfile()).errorCase);
            QCOMPARE(test::storedToken(), QByteArray("token"));
        }
        m_server->enqueue(HttpTestAnswer::of(Conduct::dropBeforeAnswer));
        QVERIFY(failureOf(m_api->fetchProfile()).platformCode);
        QCOMPARE(test::storedToken(), QByteArray("token"));
    }

    void withoutATokenTheHeaderIsMissingAndTheRequestGoesOut()
    {
        m_server->enqueue(HttpTestAnswer::json(401, "{}"));
        QCOMPARE(failureOf(m_api->fetchProfile()).errorCase, APIError::Case::unauthorized);
        QCOMPARE(m_server->requests().size(), 1);
        QVERIFY(!m_server->requests().constFirst().header("Authorization"));
    }

    void aTokenThatIsNoTextIsNone_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("isToken");
        QTest::newRow("text") << QByteArray("abc") << true;
        QTest::newRow("beyond ASCII") << QByteArray("\xc3\xa4") << true;
        QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                       "abc")
                                         << true;
        QTest::newRow("no UTF-8") << QByteArray("abc\xff") << false;
        QTest::newRow("cut short") << QByteArray("abc\xc3") << false;
        QTest::newRow("surrogate") << QByteArray("\xed\xa0\x80") << false;
    }

    void aTokenThatIsNoTextIsNone()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, isToken);
        test::storeToken(bytes);
        QCOMPARE(m_api->isLoggedIn(), isToken);
        m_server->enqueue(HttpTestAnswer::json(200, kProfile));
        await(m_api->fetchProfile());
        QCOMPARE(m_server->requests().constFirst().header("Authorization"),
                 isToken ? std::optional<QByteArray>("Bearer " + bytes) : std::nullopt);
        QCOMPARE(test::storedToken(), bytes); // reading changes nothing
    }

    void theSignedInStateIsAskedForEachTime()
    {
        QVERIFY(!m_api->isLoggedIn());
        test::storeToken("token");
        QVERIFY(m_api->isLoggedIn());
        m_api->logout();
        QVERIFY(!m_api->isLoggedIn());
        QVERIFY(!test::storedToken());
        QCOMPARE(m_server->connectionCount(), 0); // the service is not told
        m_api->logout();                          // nor is a second time an error
    }

    void aTokenThatWouldBreakTheHeaderIsNotSent()
    {
        test::storeToken("a\r\nX-Admin: yes");
        QVERIFY(failureOf(m_api->fetchProfile()).platformCode);
        QCOMPARE(m_server->connectionCount(), 0);
    }

    void anAddressIsJoinedAsItIs()
    {
        m_api = serviceAt(m_server->url().toUtf8() + "/api/");
        m_server->enqueue(HttpTestAnswer::json(200, kProfile));
        await(m_api->fetchProfile());
        QCOMPARE(m_server->requests().constFirst().target, "/api//auth/me");
    }

    void anUnusableAddressIsToldAsSuch_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("space") << QByteArray("http://my host");
        QTest::newRow("space at the end") << m_server->url().toUtf8() + " ";
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("no scheme") << QByteArray("localhost:1");
        QTest::newRow("not http") << QByteArray("ftp://localhost");
    }

    void anUnusableAddressIsToldAsSuch()
    {
        QFETCH(QByteArray, address);
        m_api = serviceAt(address);
        const Failure failure = failureOf(m_api->fetchProfile());
        QCOMPARE(failure.errorCase, APIError::Case::network);
        QCOMPARE(failure.text, QStringLiteral("Invalid URL"));
        QCOMPARE(m_server->connectionCount(), 0);
    }

    void whatIsNoHttpIsNoResponse()
    {
        m_server->enqueue(HttpTestAnswer::of(Conduct::raw, "220 smtp.example ESMTP\r\n"));
        const Failure failure = failureOf(m_api->fetchProfile());
        QCOMPARE(failure.errorCase, APIError::Case::network);
        QCOMPARE(failure.text, QStringLiteral("No response"));
    }

    void aSuccessThatCannotBeReadIsADecodingError_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("none") << QByteArray();
        QTest::newRow("html") << QByteArray("<html></html>");
        QTest::newRow("array") << QByteArray("[" + kProfile + "]");
        QTest::newRow("missing key") << QByteArray("{\"id\":1}");
        QTest::newRow("wrong type") << QByteArray(kProfile).replace("\"id\":1", "\"id\":\"1\"");
        QTest::newRow("cut short") << kProfile.left(40);
        QTest::newRow("no UTF-8") << QByteArray(kProfile).replace("\"A\"", "\"\xff\"");
        QTest::newRow("nested beyond reason")
            << QByteArray(kProfile).replace("}", ",\"x\":") + QByteArray(2000000, '[');
        QTest::newRow("as large as may be") << QByteArray(16 * 1024 * 1024, '[');
    }

    void aSuccessThatCannotBeReadIsADecodingError()
    {
        QFETCH(QByteArray, body);
        m_server->enqueue(HttpTestAnswer::json(200, body));
        const Failure failure = failureOf(m_api->fetchProfile());
        QCOMPARE(failure.errorCase, APIError::Case::decodingError);
        QCOMPARE(failure.text, QStringLiteral("Failed to process data."));
    }

    void aTransportFailurePassesThroughUnchanged_data()
    {
        QTest::addColumn<Conduct>("conduct");
        QTest::newRow("dropped") << Conduct::dropBeforeAnswer;
        QTest::newRow("dropped in the head") << Conduct::dropWithinHead;
        QTest::newRow("dropped in the body") << Conduct::dropWithinBody;
        QTest::newRow("endless") << Conduct::endless;
    }

    void aTransportFailurePassesThroughUnchanged()
    {
        QFETCH(Conduct, conduct);
        m_server->enqueue(HttpTestAnswer::of(conduct, kProfile.repeated(100)));
        const Failure failure = failureOf(m_api->logRecording(QStringLiteral("t"), 1));
        QVERIFY(!failure.errorCase);
        QVERIFY(failure.platformCode);
        QVERIFY(!failure.text.isEmpty());
        QCOMPARE(m_server->requests().size(), 1); // counted once at most
        QVERIFY(test::waitUntil([this] { return m_server->openConnectionCount() == 0; }));
    }

    void aBodyThatCannotBeSerialisedIsNotSent()
    {
        const Failure failure =
            failureOf(m_api->logRecording(QStringLiteral("t"), std::numeric_limits<double>::quiet_NaN()));
        QVERIFY(failure.platformCode);
        QCOMPARE(m_server->connectionCount(), 0);
    }

    void theEventLoopGoesOnMeanwhile()
    {
        HttpTestAnswer answer = HttpTestAnswer::of(Conduct::byteAtATime, kProfile);
        answer.pause = 1ms;
        m_server->enqueue(answer);
        int ticks = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, [&ticks] { ++ticks; });
        timer.start(5ms);
        QCOMPARE(await(m_api->fetchProfile()).name, QStringLiteral("A"));
        QVERIFY(ticks > 1);
    }

    void overlappingRequestsDoNotKnowOfEachOther()
    {
        test::storeToken("token");
        m_server->setHandler([](const test::HttpTestRequest &request) {
            if (request.target.endsWith("/stats"))
                return HttpTestAnswer::json(401, "{}");
            HttpTestAnswer answer = HttpTestAnswer::json(200, kProfile);
            answer.delay = 300ms;
            return answer;
        });
        auto slow = m_api->fetchProfile();
        QVERIFY(test::waitUntil([this] { return m_server->requests().size() == 1; }));
        QCOMPARE(failureOf(m_api->fetchAdminStats()).errorCase, APIError::Case::unauthorized);
        QVERIFY(!m_api->isLoggedIn());
        QCOMPARE(await(std::move(slow)).id, 1);
        QCOMPARE(m_server->requests().constFirst().header("Authorization"), "Bearer token");
    }

    void nothingSecretIsLogged()
    {
        const test::LogCapture log;
        test::storeToken("secret.token");
        for (const int status : {200, 400, 401, 500})
            m_server->enqueue(HttpTestAnswer::json(status, "{\"token\":\"secret.token\"}"));
        m_server->enqueue(HttpTestAnswer::of(Conduct::dropBeforeAnswer));
        for (int i = 0; i < 5; ++i)
            (void)failureOf(m_api->login(QStringLiteral("a"), QStringLiteral("secret.password")));
        QVERIFY(!log.lines().join(QLatin1Char('\n')).contains(QStringLiteral("secret.")));
    }

private:
    static std::unique_ptr<APIService> serviceAt(const QByteArray &address)
    {
        qputenv("TALVENOR_API_URL", address);
        return ServiceTestAccess::makeAPIService();
    }

    std::unique_ptr<HttpTestServer> m_server;
    std::unique_ptr<APIService> m_api;
};

QTEST_GUILESS_MAIN(APIServiceTest)
#include "APIServiceTest.moc"
