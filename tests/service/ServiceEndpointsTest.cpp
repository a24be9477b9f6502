#include "ServiceTestAccess.h"
#include "foundation/LocalizedError.h"
#include "platform/linux/network/LinuxNetwork.h"
#include "support/Await.h"
#include "support/HttpTestServer.h"

#include <QJsonArray>
#include <QProcess>
#include <QTest>

using namespace talvenor;
using test::await;
using test::HttpTestAnswer;
using test::HttpTestServer;

namespace {

const QByteArray kProfile = R"({"id":1,"email":"a@b.de","name":"A","role":"user","subscription_tier":"free",
    "recordings_count":0})";
const QByteArray kAuth = R"({"token":"new.token","user":)" + kProfile + "}";

/// One operation: what it has to send, what it is answered with.
struct Endpoint
{
    std::function<void(APIService &)> call; ///< returns when it has ended; checks its result
    QByteArray method;
    QByteArray target;
    bool isAuthenticated;
    std::optional<QJsonObject> body;
    QByteArray answer;
};

const auto s = [](const char *text) { return QString::fromUtf8(text); };

QList<QPair<const char *, Endpoint>> allEndpoints()
{
    return {
        {"register",
         {[](APIService &api) {
              QCOMPARE(await(api.register_(s("e"), s("p"), s("ä"))).token, s("new.token"));
          },
          "POST", "/auth/register", false,
          QJsonObject{{s("email"), s("e")}, {s("password"), s("p")}, {s("name"), s("ä")}}, kAuth}},
        {"login",
         {[](APIService &api) { QCOMPARE(await(api.login(s("e"), s("p\"ß"))).user.id, 1); }, "POST",
          "/auth/login", false, QJsonObject{{s("email"), s("e")}, {s("password"), s("p\"ß")}}, kAuth}},
        {"fetchProfile",
         {[](APIService &api) { QCOMPARE(await(api.fetchProfile()).email, s("a@b.de")); }, "GET", "/auth/me",
          true, std::nullopt, kProfile}},
        {"logRecording",
         {[](APIService &api) { await(api.logRecording(s("Meeting"), 61.25)); }, "POST", "/auth/record", true,
          QJsonObject{{s("title"), s("Meeting")}, {s("duration"), 61.25}},
          R"({"ok":true,"count":3,"text":"x","none":null,"list":[1],"object":{"a":1}})"}},
        {"updateProfile",
         {[](APIService &api) { QCOMPARE(await(api.updateProfile(s("B"))).name, s("A")); }, "PUT",
          "/auth/profile", true, QJsonObject{{s("name"), s("B")}}, kProfile}},
        {"changePassword",
         {[](APIService &api) { await(api.changePassword(s("old"), s("new"))); }, "PUT", "/auth/password",
          true, QJsonObject{{s("current_password"), s("old")}, {s("new_password"), s("new")}}, "{}"}},
        {"createOrder",
         {[](APIService &api) {
              QCOMPARE(await(api.createOrder(s("basic"))).approval_url, s("https://pay/1"));
          },
          "POST", "/subscriptions/create-order", true, QJsonObject{{s("tier"), s("basic")}},
          R"({"order_id":"1","approval_url":"https://pay/1"})"}},
        {"captureOrder",
         {[](APIService &api) {
              const CaptureResponse response = await(api.captureOrder(s("1"), s("basic")));
              QVERIFY(response.success);
              QCOMPARE(response.subscription_tier, s("basic"));
              QVERIFY(!response.expires_at);
          },
          "POST", "/subscriptions/capture-order", true,
          QJsonObject{{s("order_id"), s("1")}, {s("tier"), s("basic")}},
          R"({"success":true,"subscription_tier":"basic","expires_at":null})"}},
        {"fetchAdminUsers",
         {[](APIService &api) { QCOMPARE(await(api.fetchAdminUsers()).size(), 2); }, "GET", "/admin/users",
          true, std::nullopt, R"({"users":[)" + kProfile + "," + kProfile + "]}"}},
        {"fetchAdminStats",
         {[](APIService &api) {
              QCOMPARE(await(api.fetchAdminStats()), (AdminStats{1, 2, 3, 4}));
          },
          "GET", "/admin/stats", true, std::nullopt,
          R"({"total_users":1,"premium_users":2,"total_recordings":3,"new_users_7d":4})"}},
        {"updateUser",
         {[](APIService &api) { QCOMPARE(await(api.updateUser(42, s("basic"), s("admin"), 3)).id, 1); },
          "PUT", "/admin/users/42", true,
          QJsonObject{
              {s("subscription_tier"), s("basic")}, {s("role"), s("admin")}, {s("subscription_months"), 3}},
          R"({"user":)" + kProfile + "}"}},
        {"updateUser, plan alone",
         {[](APIService &api) { (void)await(api.updateUser(-1, s("free"), std::nullopt, std::nullopt)); },
          "PUT", "/admin/users/-1", true, QJsonObject{{s("subscription_tier"), s("free")}},
          R"({"user":)" + kProfile + "}"}},
        {"updateUser, role alone",
         {[](APIService &api) { (void)await(api.updateUser(1, std::nullopt, s("user"), std::nullopt)); },
          "PUT", "/admin/users/1", true, QJsonObject{{s("role"), s("user")}},
          R"({"user":)" + kProfile + "}"}},
        {"updateUser, nothing",
         {[](APIService &api) { (void)await(api.updateUser(1, std::nullopt, std::nullopt, std::nullopt)); },
          "PUT", "/admin/users/1", true, QJsonObject(),
          R"({"other":)" + kProfile + R"(,"user":)" + kProfile + "}"}},
        {"deleteUser",
         {[](APIService &api) { await(api.deleteUser(9223372036854775807)); }, "DELETE",
          "/admin/users/9223372036854775807", true, std::nullopt, R"({"ok":1})"}},
        {"summarize",
         {[](APIService &api) {
              QCOMPARE(await(api.summarize(s("[00:01] Hällo\n"), s("de"))), s("## Kurz"));
          },
          "POST", "/summarize", true,
          QJsonObject{{s("transcript"), s("[00:01] Hällo\n")}, {s("language"), s("de")}},
          R"({"summary":"## Kurz","tokens":5})"}},
        {"checkForUpdate",
         {[](APIService &api) {
              const auto version = await(api.checkForUpdate());
              QVERIFY(version);
              QCOMPARE(version->version, s("0.0.1")); // a label that is not compared
              QCOMPARE(version->build_number, 1'000'000);
              QVERIFY(!version->download_url);
          },
          "GET", "/versions/latest", false, std::nullopt, R"({"version":"0.0.1","build_number":1000000})"}},
    };
}

} // namespace

/// Each operation: what it sends, key by key, and what it makes of the answer.
class ServiceEndpointsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installLinuxNetwork(Platform::shared()); }

    void init()
    {
        m_server = std::make_unique<HttpTestServer>();
        qputenv("TALVENOR_API_URL", m_server->url().toUtf8());
        m_api = ServiceTestAccess::makeAPIService();
        test::storeToken("old.token");
    }

    void anOperationSendsWhatIsTold_data()
    {
        QTest::addColumn<int>("index");
        const auto endpoints = allEndpoints();
        for (int i = 0; i < endpoints.size(); ++i)
            QTest::newRow(endpoints.at(i).first) << i;
    }

    void anOperationSendsWhatIsTold()
    {
        QFETCH(int, index);
        const Endpoint endpoint = allEndpoints().at(index).second;
        m_server->enqueue(HttpTestAnswer::json(200, endpoint.answer));
        endpoint.call(*m_api);
        QCOMPARE(m_server->requests().size(), 1);
        const auto request = m_server->requests().constFirst();
        QCOMPARE(request.method, endpoint.method);
        QCOMPARE(request.target, endpoint.target);
        QCOMPARE(request.header("Content-Type"), "application/json");
        QCOMPARE(request.header("Authorization"),
                 endpoint.isAuthenticated ? std::optional<QByteArray>("Bearer old.token") : std::nullopt);
        QCOMPARE(request.body.isEmpty(), !endpoint.body);
        QCOMPARE(request.json(), endpoint.body.value_or(QJsonObject()));
    }

    void signingInStoresTheTokenFirst()
    {
        m_server->setHandler([](const auto &) { return HttpTestAnswer::json(201, kAuth); });
        await(m_api->login(s("e"), s("p")));
        QCOMPARE(test::storedToken(), QByteArray("new.token"));
        test::removeToken();
        await(m_api->register_(s("e"), s("p"), s("n")));
        QCOMPARE(test::storedToken(), QByteArray("new.token"));
    }

    void anEmptyTokenIsNoSession()
    {
        m_server->enqueue(HttpTestAnswer::json(200, R"({"token":"","user":)" + kProfile + "}"));
        await(m_api->login(s("e"), s("p")));
        QVERIFY(!test::storedToken());
        QVERIFY(!m_api->isLoggedIn());
    }

    void aRefusedSignInStoresNothing_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("taken") << 409 << QByteArray(R"({"error":"taken","token":"x"})");
        QTest::newRow("incomplete user") << 200 << QByteArray(R"({"token":"x","user":{"id":1}})");
        QTest::newRow("incomplete answer") << 200 << QByteArray(R"({"token":"x"})");
        QTest::newRow("status without success") << 202 << kAuth;
    }

    void aRefusedSignInStoresNothing()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        m_server->enqueue(HttpTestAnswer::json(status, body));
        QVERIFY_EXCEPTION_THROWN(await(m_api->login(s("e"), s("p"))), APIError);
        QCOMPARE(test::storedToken(), QByteArray("old.token"));
    }

    void whereTheContentDoesNotMatterItHasToBeAnObject_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("empty object") << QByteArray("{}") << true;
        QTest::newRow("nested") << QByteArray(R"({"a":[[{}]],"b":null})") << true;
        QTest::newRow("array") << QByteArray("[]") << false;
        QTest::newRow("text") << QByteArray("\"ok\"") << false;
        QTest::newRow("true") << QByteArray("true") << false;
        QTest::newRow("none") << QByteArray() << false;
    }

    void whereTheContentDoesNotMatterItHasToBeAnObject()
    {
        QFETCH(QByteArray, body);
        QFETCH(bool, isTaken);
        m_server->setHandler([body](const auto &) { return HttpTestAnswer::json(200, body); });
        QCOMPARE(isDecoded(m_api->logRecording(s("t"), 0)), isTaken);
        QCOMPARE(isDecoded(m_api->changePassword(s("a"), s("b"))), isTaken);
        QCOMPARE(isDecoded(m_api->deleteUser(1)), isTaken);
    }

    void aChangedUserHasToBeOne()
    {
        m_server->enqueue(HttpTestAnswer::json(200, R"({"ok":true})"));
        QVERIFY(!isDecoded(m_api->updateUser(1, s("free"), std::nullopt, std::nullopt)));
        m_server->enqueue(HttpTestAnswer::json(200, R"({"user":)" + kProfile + R"(,"ok":true})"));
        QVERIFY(!isDecoded(m_api->updateUser(1, s("free"), std::nullopt, std::nullopt)));
    }

    void anAnswerWithoutTheChangedUserEndsTheProgram_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray("{}");
        QTest::newRow("another key") << QByteArray(R"({"User":)" + kProfile + "}");
    }

    void anAnswerWithoutTheChangedUserEndsTheProgram()
    {
        QFETCH(QByteArray, body);
        m_server->enqueue(HttpTestAnswer::json(200, body));
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QCoreApplication::applicationFilePath(), {s("--update-user")});
        QVERIFY(program.waitForFinished(60'000));
        QVERIFY(program.exitStatus() == QProcess::CrashExit || program.exitCode() != 0);
        const QByteArray output = program.readAll();
        QVERIFY2(output.contains("Programming error"), output.constData());
        QVERIFY(!output.contains("the operation has returned"));
        QCOMPARE(m_server->requests().size(), 1);
    }

    void anUpdateHasAHigherBuildNumber()
    {
        for (const auto &[number, isUpdate] :
             {std::pair{"2", true}, {"1", false}, {"0", false}, {"-5", false}}) {
            m_server->enqueue(
                HttpTestAnswer::json(200, R"({"version":"9.9","build_number":)" + QByteArray(number) + "}"));
            QCOMPARE(await(m_api->checkForUpdate()).has_value(), isUpdate);
        }
    }

private:
    /// False if the answer to an operation could not be decoded.
    template<typename T>
    static bool isDecoded(Task<T> task)
    {
        try {
            await(std::move(task));
            return true;
        } catch (const APIError &error) {
            if (error.errorCase() != APIError::Case::decodingError)
                qFatal("another failure: %s", error.what());
            return false;
        }
    }

    std::unique_ptr<HttpTestServer> m_server;
    std::unique_ptr<APIService> m_api;
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "--update-user") == 0) {
        // The program that a test wants to see end.
        installLinuxNetwork(Platform::shared());
        (void)await(APIService::shared().updateUser(1, s("free"), std::nullopt, std::nullopt));
        qInfo("the operation has returned");
        return 0;
    }
    ServiceEndpointsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ServiceEndpointsTest.moc"
