#include "ServiceTestAccess.h"
#include "platform/linux/network/LinuxNetwork.h"
#include "support/Await.h"
#include "support/HttpTestServer.h"
#include "support/LogCapture.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using namespace std::chrono_literals;
using test::await;
using test::HttpTestAnswer;
using test::HttpTestServer;
using Conduct = HttpTestAnswer::Conduct;

namespace {

UserProfile user(const QString &name, const QString &tier = QStringLiteral("free"))
{
    UserProfile profile;
    profile.id = 1;
    profile.email = QStringLiteral("a@b.de");
    profile.name = name;
    profile.role = QStringLiteral("user");
    profile.subscription_tier = tier;
    return profile;
}

HttpTestAnswer profileAnswer(const UserProfile &profile)
{
    return HttpTestAnswer::json(200, QJsonDocument(profile.toJson()).toJson());
}

HttpTestAnswer signInAnswer(const UserProfile &profile)
{
    return HttpTestAnswer::json(
        200, QJsonDocument(AuthResponse{QStringLiteral("new.token"), profile}.toJson()).toJson());
}

const auto kEmail = QStringLiteral("a@b.de");
const auto kPassword = QStringLiteral("password");

} // namespace

/// The session, against a real server and a real secret store.
class AuthServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installLinuxNetwork(Platform::shared()); }

    void init()
    {
        m_server = std::make_unique<HttpTestServer>();
        qputenv("TALVENOR_API_URL", m_server->url().toUtf8());
        m_api = ServiceTestAccess::makeAPIService();
        test::removeToken();
    }

    // The states at a start

    void withoutATokenNobodyIsSignedIn()
    {
        const auto auth = start();
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
        QVERIFY(!auth->isLoading());
        QCoreApplication::processEvents();
        QCOMPARE(m_server->connectionCount(), 0);
    }

    void aTokenIsTakenOnTrustAndTheProfileFetched()
    {
        test::storeToken("old.token");
        m_server->enqueue(profileAnswer(user(QStringLiteral("A"))));
        const auto auth = start();
        QSignalSpy userChanged(auth.get(), &AuthService::currentUserChanged);
        QSignalSpy loggedInChanged(auth.get(), &AuthService::isLoggedInChanged);
        QCOMPARE(state(*auth), QStringLiteral("restored"));
        QCOMPARE(m_server->connectionCount(), 0); // the refresh begins later
        QVERIFY(!auth->canRecord() && !auth->isAdmin() && !auth->canUseSummary() && !auth->canExport());
        QVERIFY(test::waitUntil([&] { return auth->currentUser().has_value(); }));
        QCOMPARE(state(*auth), QStringLiteral("signed in"));
        QCOMPARE(m_server->requests().constFirst().header("Authorization"), "Bearer old.token");
        QCOMPARE(userChanged.size(), 1);
        QCOMPARE(loggedInChanged.size(), 0); // it was so before
    }

    void withATokenAndNoNetworkTheSessionIsKeptWithoutRights()
    {
        test::storeToken("old.token");
        m_server.reset(); // nobody listens there any more
        const test::LogCapture log;
        const auto auth = start();
        await(auth->refreshProfile());
        QCOMPARE(state(*auth), QStringLiteral("restored"));
        QVERIFY(!auth->canRecord());
        QCOMPARE(test::storedToken(), QByteArray("old.token"));
        QCOMPARE(log.lines(), QStringList()); // nobody is told
    }

    void a401OnTheFirstRefreshEndsTheSession()
    {
        test::storeToken("old.token");
        m_server->enqueue(HttpTestAnswer::json(401, R"({"error":"revoked"})"));
        const auto auth = start();
        QSignalSpy loggedInChanged(auth.get(), &AuthService::isLoggedInChanged);
        QVERIFY(test::waitUntil([&] { return !auth->isLoggedIn(); }));
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
        QCOMPARE(loggedInChanged.size(), 1);
        QVERIFY(!test::storedToken());
    }

    // Signing in

    void aSignInEndsWithAFreshProfile_data()
    {
        QTest::addColumn<bool>("registers");
        QTest::newRow("login") << false;
        QTest::newRow("registration") << true;
    }

    void aSignInEndsWithAFreshProfile()
    {
        QFETCH(bool, registers);
        const auto auth = start();
        m_server->enqueue(signInAnswer(user(QStringLiteral("from the sign-in"))));
        HttpTestAnswer fresh = profileAnswer(user(QStringLiteral("fresh")));
        fresh.delay = 200ms;
        m_server->enqueue(fresh);

        // Every change as it is seen by a screen at its signal.
        QStringList seen;
        const auto note = [&](const char *what) {
            seen.append(QStringLiteral("%1: %2 %3 %4")
                            .arg(QString::fromLatin1(what), state(*auth),
                                 auth->currentUser() ? auth->currentUser()->name : QStringLiteral("-"),
                                 auth->isLoading() ? QStringLiteral("loading") : QStringLiteral("idle")));
        };
        connect(auth.get(), &AuthService::isLoadingChanged, this, [&] { note("isLoading"); });
        connect(auth.get(), &AuthService::currentUserChanged, this, [&] { note("currentUser"); });
        connect(auth.get(), &AuthService::isLoggedInChanged, this, [&] { note("isLoggedIn"); });
        auto operation = registers ? auth->register_(kEmail, kPassword, QStringLiteral("Name"))
                                   : auth->login(kEmail, kPassword);
        QVERIFY(auth->isLoading());
        await(std::move(operation));
        QCOMPARE(seen, (QStringList{
                           QStringLiteral("isLoading: signed out - loading"),
                           QStringLiteral("currentUser: user without session from the sign-in loading"),
                           QStringLiteral("isLoggedIn: signed in from the sign-in loading"),
                           QStringLiteral("currentUser: signed in fresh loading"),
                           QStringLiteral("isLoading: signed in fresh idle"),
                       }));
        QCOMPARE(test::storedToken(), QByteArray("new.token"));
        const auto requests = m_server->requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests.at(0).target, registers ? "/auth/register" : "/auth/login");
        QCOMPARE(requests.at(1).target, "/auth/me");
        QCOMPARE(requests.at(1).header("Authorization"), "Bearer new.token");
    }

    void aWrongPasswordChangesNothing()
    {
        const auto auth = start();
        QSignalSpy userChanged(auth.get(), &AuthService::currentUserChanged);
        QSignalSpy loggedInChanged(auth.get(), &AuthService::isLoggedInChanged);
        m_server->enqueue(HttpTestAnswer::json(401, R"({"error":"wrong"})"));
        QCOMPARE(failureOf(auth->login(kEmail, kPassword)), APIError::Case::unauthorized);
        QVERIFY(!auth->isLoading());
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
        QVERIFY(!test::storedToken());
        QCOMPARE(userChanged.size() + loggedInChanged.size(), 0);
        QCOMPARE(m_server->requests().size(), 1);
    }

    void aFailedSignInKeepsTheSessionThatWas()
    {
        const auto auth = signedIn(user(QStringLiteral("A")));
        for (const bool registers : {false, true}) {
            m_server->enqueue(HttpTestAnswer::json(409, R"({"error":"taken"})"));
            QCOMPARE(failureOf(registers ? auth->register_(kEmail, kPassword, kEmail)
                                         : auth->login(kEmail, kPassword)),
                     APIError::Case::badRequest);
            QVERIFY(!auth->isLoading());
            QCOMPARE(state(*auth), QStringLiteral("signed in"));
            QCOMPARE(auth->currentUser()->name, QStringLiteral("A"));
        }
    }

    void aSignInThatCannotReachTheServiceFails()
    {
        const auto auth = start();
        m_server->enqueue(HttpTestAnswer::of(Conduct::dropBeforeAnswer));
        QVERIFY_EXCEPTION_THROWN(await(auth->login(kEmail, kPassword)), PlatformError);
        QVERIFY(!auth->isLoading());
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
    }

    void aSignInWhoseRefreshFailsCounts()
    {
        const auto auth = start();
        m_server->enqueue(signInAnswer(user(QStringLiteral("from the sign-in"))));
        m_server->enqueue(HttpTestAnswer::of(Conduct::dropBeforeAnswer));
        await(auth->login(kEmail, kPassword));
        QCOMPARE(state(*auth), QStringLiteral("signed in"));
        QCOMPARE(auth->currentUser()->name, QStringLiteral("from the sign-in"));
        QCOMPARE(test::storedToken(), QByteArray("new.token"));
        QVERIFY(!auth->isLoading());
    }

    void aSignInWhoseRefreshIsRefusedEndsSignedOut()
    {
        const auto auth = start();
        m_server->enqueue(signInAnswer(user(QStringLiteral("A"))));
        m_server->enqueue(HttpTestAnswer::json(401, "{}"));
        await(auth->login(kEmail, kPassword)); // no failure: the refresh never fails
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
        QVERIFY(!auth->isLoading());
        QVERIFY(!test::storedToken());
    }

    // The session

    void aSignOutForgetsAndTellsNobody()
    {
        const auto auth = signedIn(user(QStringLiteral("A")));
        m_server->clearRequests();
        QSignalSpy userChanged(auth.get(), &AuthService::currentUserChanged);
        QSignalSpy loggedInChanged(auth.get(), &AuthService::isLoggedInChanged);
        auth->logout();
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
        QVERIFY(!test::storedToken());
        QCOMPARE(userChanged.size(), 1);
        QCOMPARE(loggedInChanged.size(), 1);
        QVERIFY(m_server->requests().isEmpty());
        auth->logout();
        QCOMPARE(userChanged.size() + loggedInChanged.size(), 2); // nothing has changed any more
    }

    void anyOtherRefusalOfARefreshChangesNothing_data()
    {
        QTest::addColumn<HttpTestAnswer>("answer");
        for (const int status : {400, 403, 404, 409, 500, 503, 204})
            QTest::addRow("%d", status) << HttpTestAnswer::json(status, R"({"error":"no"})");
        QTest::newRow("undecodable") << HttpTestAnswer::json(200, "{}");
        QTest::newRow("no HTTP") << HttpTestAnswer::of(Conduct::raw, "SSH-2.0-x\r\n");
        QTest::newRow("dropped") << HttpTestAnswer::of(Conduct::dropBeforeAnswer);
        QTest::newRow("endless") << HttpTestAnswer::of(Conduct::endless, QByteArray(65536, ' '));
    }

    void anyOtherRefusalOfARefreshChangesNothing()
    {
        QFETCH(HttpTestAnswer, answer);
        const auto auth = signedIn(user(QStringLiteral("A")));
        QSignalSpy userChanged(auth.get(), &AuthService::currentUserChanged);
        QSignalSpy loggedInChanged(auth.get(), &AuthService::isLoggedInChanged);
        m_server->enqueue(answer);
        await(auth->refreshProfile());
        QCOMPARE(state(*auth), QStringLiteral("signed in"));
        QCOMPARE(auth->currentUser()->name, QStringLiteral("A"));
        QCOMPARE(userChanged.size() + loggedInChanged.size(), 0);
        QCOMPARE(test::storedToken(), QByteArray("new.token"));
    }

    void anUnusableAddressDoesNotEndTheSession()
    {
        qputenv("TALVENOR_API_URL", "http://my host");
        m_api = ServiceTestAccess::makeAPIService();
        test::storeToken("token");
        const auto auth = start();
        await(auth->refreshProfile());
        QCOMPARE(state(*auth), QStringLiteral("restored"));
    }

    void a401ElsewhereShowsAtTheNextRefresh()
    {
        const auto auth = signedIn(user(QStringLiteral("A")));
        m_server->enqueue(HttpTestAnswer::json(401, "{}"));
        QVERIFY_EXCEPTION_THROWN(await(m_api->fetchAdminStats()), APIError);
        QVERIFY(!test::storedToken());
        QCOMPARE(state(*auth), QStringLiteral("signed in")); // nobody has told the session
        m_server->enqueue(HttpTestAnswer::json(401, "{}"));
        await(auth->refreshProfile());
        QVERIFY(!m_server->requests().constLast().header("Authorization"));
        QCOMPARE(state(*auth), QStringLiteral("signed out"));
    }

    void theLastToFinishSetsTheUser()
    {
        const auto auth = signedIn(user(QStringLiteral("A")));
        HttpTestAnswer late = profileAnswer(user(QStringLiteral("asked first, came last")));
        late.delay = 300ms;
        m_server->enqueue(late);
        m_server->clearRequests();
        auto first = auth->refreshProfile();
        QVERIFY(test::waitUntil([this] { return m_server->requests().size() == 1; }));
        m_server->enqueue(profileAnswer(user(QStringLiteral("asked last"))));
        await(auth->refreshProfile());
        QCOMPARE(auth->currentUser()->name, QStringLiteral("asked last"));
        await(std::move(first));
        QCOMPARE(auth->currentUser()->name, QStringLiteral("asked first, came last"));
    }

    void aRefreshRevivesASessionThatWasSignedOut()
    {
        const auto auth = start();
        m_server->enqueue(profileAnswer(user(QStringLiteral("A"))));
        await(auth->refreshProfile());
        QCOMPARE(state(*auth), QStringLiteral("signed in"));
    }

    void aSessionMayGoBeforeItsOperations()
    {
        for (const bool fails : {false, true}) {
            test::removeToken();
            auto auth = start();
            test::storeToken("old.token");
            m_server->clearRequests();
            HttpTestAnswer late =
                fails ? HttpTestAnswer::json(401, "{}") : profileAnswer(user(QStringLiteral("A")));
            late.delay = 100ms;
            m_server->enqueue(late);
            auto refresh = auth->refreshProfile();
            QVERIFY(test::waitUntil([this] { return m_server->requests().size() == 1; }));
            auth.reset();
            await(std::move(refresh)); // the sanitizers would tell
        }
    }

    // The rights

    void rightsFollowFromTheProfile_data()
    {
        QTest::addColumn<UserProfile>("profile");
        QTest::addColumn<bool>("canRecord");
        QTest::addColumn<bool>("isPaid");
        const auto row = [](const char *name, const char *tier, qint64 count, std::optional<qint64> limit,
                            std::optional<bool> verdict, bool isAdmin, bool canRecord, bool isPaid) {
            UserProfile profile = user(QStringLiteral("A"), QString::fromLatin1(tier));
            profile.recordings_count = count;
            profile.recordings_limit = limit;
            profile.can_record = verdict;
            profile.role = isAdmin ? QStringLiteral("admin") : QStringLiteral("user");
            QTest::newRow(name) << profile << canRecord << isPaid;
        };
        constexpr auto none = std::nullopt;
        row("free, below", "free", 2, none, none, false, true, false);
        row("free, at the limit", "free", 3, none, none, false, false, false);
        row("basic, below", "basic", 24, none, none, false, true, true);
        row("basic, at the limit", "basic", 25, none, none, false, false, true);
        row("basic, the service's limit", "basic", 10, 10, none, false, false, true);
        row("free, the service's limit", "free", 9, 10, none, false, true, false);
        row("premium, no limit", "premium", 1000, 1, none, false, true, true);
        row("lifetime, no limit", "lifetime", 1000, 1, none, false, true, true);
        row("unknown plan, below", "enterprise", 2, none, none, false, true, false);
        row("unknown plan, at the limit", "enterprise", 3, none, none, false, false, false);
        row("capital letter", "Premium", 3, none, none, false, false, false);
        row("administrator without a paid plan", "free", 1000, none, none, true, true, false);
        row("verdict no, premium", "premium", 0, none, false, false, false, true);
        row("verdict no, administrator", "free", 0, none, false, true, false, false);
        row("verdict yes, over the limit", "free", 1000, none, true, false, true, false);
        row("limit of none", "free", 0, 0, none, false, false, false);
    }

    void rightsFollowFromTheProfile()
    {
        QFETCH(UserProfile, profile);
        QFETCH(bool, canRecord);
        QFETCH(bool, isPaid);
        const auto auth = signedIn(profile);
        QCOMPARE(auth->canRecord(), canRecord);
        QCOMPARE(auth->hasPaidPlan(), isPaid);
        QCOMPARE(auth->canUseSummary(), isPaid);
        QCOMPARE(auth->canExport(), isPaid);
        QCOMPARE(auth->isAdmin(), profile.role == QStringLiteral("admin"));
        QCOMPARE(auth->isPremium(), profile.subscription_tier == QStringLiteral("premium"));
        QCOMPARE(auth->subscriptionTier(), profile.subscription_tier);
        // Screens read the same by their names.
        QCOMPARE(auth->property("canRecord").toBool(), canRecord);
        QCOMPARE(auth->property("canExport").toBool(), isPaid);
        QCOMPARE(auth->property("currentUser").value<UserProfile>(), profile);
        auth->logout();
        QVERIFY(!auth->canRecord() && !auth->hasPaidPlan() && !auth->canUseSummary() && !auth->canExport() &&
                !auth->isAdmin() && !auth->isPremium());
        QCOMPARE(auth->subscriptionTier(), QStringLiteral("free"));
        QVERIFY(!auth->property("currentUser").isValid());
    }

    void theSharedSessionIsOne()
    {
        QCOMPARE(&AuthService::shared(), &AuthService::shared());
        QVERIFY(!AuthService::shared().isLoggedIn());
    }

private:
    [[nodiscard]] std::unique_ptr<AuthService> start() const
    {
        return ServiceTestAccess::makeAuthService(*m_api);
    }

    [[nodiscard]] std::unique_ptr<AuthService> signedIn(const UserProfile &profile)
    {
        auto auth = start();
        m_server->enqueue(signInAnswer(profile));
        m_server->enqueue(profileAnswer(profile));
        await(auth->login(kEmail, kPassword));
        return auth;
    }

    static QString state(const AuthService &auth)
    {
        if (auth.isLoggedIn())
            return auth.currentUser() ? QStringLiteral("signed in") : QStringLiteral("restored");
        return auth.currentUser() ? QStringLiteral("user without session") : QStringLiteral("signed out");
    }

    static std::optional<APIError::Case> failureOf(Task<> task)
    {
        try {
            await(std::move(task));
        } catch (const APIError &error) {
            return error.errorCase();
        }
        return std::nullopt;
    }

    std::unique_ptr<HttpTestServer> m_server;
    std::unique_ptr<APIService> m_api;
};

Q_DECLARE_METATYPE(talvenor::test::HttpTestAnswer)

QTEST_GUILESS_MAIN(AuthServiceTest)
#include "AuthServiceTest.moc"
