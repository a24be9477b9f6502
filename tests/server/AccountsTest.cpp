#include "server/accounts/Accounts.h"
#include "server/accounts/EmailAddress.h"
#include "server/common/Log.h"
#include "server/common/Refusal.h"
#include "server/storage/Migrations.h"
#include "server/storage/SqliteAccountStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cstdlib>
#include <ctime>
#include <set>
#include <thread>
#include <unistd.h>

using namespace talvenor::server;
using namespace std::chrono_literals;

namespace {

TimePoint at(std::chrono::year_month_day day, std::chrono::milliseconds time)
{
    return TimePoint(std::chrono::sys_days(day)) + time;
}

/// Accounts on a database of their own, with a clock that stands where it is put.
struct Fixture
{
    QTemporaryDir folder;
    SqliteDatabase database{folder.path().toStdString()};
    SqliteAccountStore store{database};
    PasswordHasher hasher{PasswordCost{1, 8192}};
    TimePoint now = at(std::chrono::year(2026) / 3 / 15, 10h);
    Accounts accounts{store, hasher, LoginLimits{}, [this] { return now; }};
};

template<typename Operation>
std::optional<Reason> refusalOf(Operation operation)
{
    try {
        operation();
    } catch (const Refusal &refusal) {
        return refusal.reason();
    }
    return std::nullopt;
}

/// Sets the time zone of the process for one scope.
class Zone
{
public:
    explicit Zone(const char *name) : m_before(qgetenv("TZ")), m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        ::setenv("TZ", name, 1);
        ::tzset();
    }
    ~Zone()
    {
        if (m_wasSet)
            ::setenv("TZ", m_before.constData(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    Q_DISABLE_COPY_MOVE(Zone)

private:
    QByteArray m_before;
    bool m_wasSet;
};

/// All bytes of all files in a folder.
QByteArray contentsOf(const QString &folder)
{
    QByteArray contents;
    for (const QFileInfo &info : QDir(folder).entryInfoList(QDir::Files)) {
        QFile file(info.filePath());
        if (file.open(QIODevice::ReadOnly))
            contents += file.readAll();
    }
    return contents;
}

} // namespace

/// The rules of accounts and how they are kept, without HTTP.
class AccountsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addressesAreComparedInOneForm_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("address"); // empty for none
        QTest::newRow("plain") << QStringLiteral("a@b.c") << QStringLiteral("a@b.c");
        QTest::newRow("case and blanks")
            << QStringLiteral(" \tA.B+C@Example.ORG\n") << QStringLiteral("a.b+c@example.org");
        QTest::newRow("local host") << QStringLiteral("a@b") << QStringLiteral("a@b");
        QTest::newRow("other letters")
            << QStringLiteral("jörg@müller.de") << QStringLiteral("jörg@müller.de");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("blank") << QStringLiteral("  ") << QString();
        QTest::newRow("no name") << QStringLiteral("@b.c") << QString();
        QTest::newRow("no host") << QStringLiteral("a@") << QString();
        QTest::newRow("blank inside") << QStringLiteral("a b@c.d") << QString();
        QTest::newRow("list") << QStringLiteral("a@b.c,d") << QString();
        QTest::newRow("angle brackets") << QStringLiteral("<a@b.c>") << QString();
    }

    void addressesAreComparedInOneForm()
    {
        QFETCH(QString, text);
        QFETCH(QString, address);
        const auto found = normalisedEmail(text.toStdString());
        QCOMPARE(found.has_value(), !address.isEmpty());
        if (found)
            QCOMPARE(QString::fromStdString(*found), address);
    }

    void aMonthBeginsInTheZoneOfTheService()
    {
        const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
        // Half past one in the night of the first of April is still March in UTC.
        QCOMPARE(isoText(startOfMonth(at(std::chrono::year(2026) / 3 / 31, 23h + 30min))),
                 std::string("2026-03-31T22:00:00.000Z"));
        // The clocks change within March: its beginning is in winter time.
        QCOMPARE(isoText(startOfMonth(at(std::chrono::year(2026) / 3 / 31, 21h))),
                 std::string("2026-02-28T23:00:00.000Z"));
        QCOMPARE(isoText(startOfMonth(at(std::chrono::year(2025) / 12 / 31, 23h))),
                 std::string("2025-12-31T23:00:00.000Z"));
    }

    void countsBeginAnewWithTheMonth()
    {
        const Zone zone("UTC0");
        Fixture fixture;
        fixture.now = at(std::chrono::year(2026) / 1 / 31, 23h + 59min + 59s + 999ms);
        const Account account = fixture.accounts.create("a@b.c", "secret", "A", Tier::free, Role::user);
        for (int index = 0; index < 3; ++index)
            QVERIFY(fixture.accounts.logRecording(account, "x", 1).recordingsCount == index + 1);
        QVERIFY(refusalOf([&] { (void)fixture.accounts.logRecording(account, "x", 1); }) ==
                Reason::recordingLimitReached);
        fixture.now += 1ms;
        QCOMPARE(fixture.accounts.profile(account).recordingsCount, std::int64_t{0});
        QCOMPARE(fixture.accounts.logRecording(account, "x", 1).recordingsCount, std::int64_t{1});
    }

    void aPaidPeriodEnds()
    {
        Fixture fixture;
        Account account = fixture.accounts.create("a@b.c", "secret", "A", Tier::free, Role::user);
        fixture.store.setTier(account.id, Tier::premium, fixture.now + 1h);
        account = *fixture.store.withEmail("a@b.c");
        Profile profile = fixture.accounts.profile(account);
        QVERIFY(profile.tier == Tier::premium);
        QCOMPARE(isoText(*profile.expiry), std::string("2026-03-15T11:00:00.000Z"));
        QVERIFY(!profile.recordingsLimit.has_value());
        fixture.accounts.requireSummaries(account);
        fixture.now += 1h;
        profile = fixture.accounts.profile(account);
        QVERIFY(profile.tier == Tier::free);
        QVERIFY(!profile.expiry.has_value());
        QCOMPARE(profile.recordingsLimit.value_or(-1), std::int64_t{3});
        QVERIFY(refusalOf([&] { fixture.accounts.requireSummaries(account); }) == Reason::summaryNotInPlan);
    }

    void theLimitsOfThePlans()
    {
        QCOMPARE(monthlyRecordings(Tier::free, Role::user).value_or(-1), std::int64_t{3});
        QCOMPARE(monthlyRecordings(Tier::basic, Role::user).value_or(-1), std::int64_t{25});
        QVERIFY(!monthlyRecordings(Tier::premium, Role::user).has_value());
        QVERIFY(!monthlyRecordings(Tier::lifetime, Role::user).has_value());
        QVERIFY(!monthlyRecordings(Tier::free, Role::admin).has_value());
        QVERIFY(!tierNamed("Premium").has_value());
        QVERIFY(!roleNamed("").has_value());
    }

    void aLoginBegunWithTheOldPasswordOpensNothing()
    {
        Fixture fixture;
        const Account before = fixture.accounts.create("a@b.c", "secret", "A", Tier::free, Role::user);
        const Session session = fixture.accounts.login("a@b.c", "secret", "here");
        fixture.accounts.changePassword(before, session.token, "secret", "secret2", "here");
        QVERIFY(!fixture.store.addToken(before.id, before.passwordHash, tokenHash("late"), fixture.now));
        QVERIFY(!fixture.store.withToken(tokenHash("late")).has_value());
        // Nor does a second change that has seen the old password only.
        QVERIFY(
            !fixture.store.changePassword(before.id, before.passwordHash, "other", tokenHash(session.token)));
    }

    void theOldestSessionsGoFirst()
    {
        Fixture fixture;
        const Account account = fixture.accounts.create("a@b.c", "secret", "A", Tier::free, Role::user);
        for (int index = 0; index < 101; ++index)
            QVERIFY(fixture.store.addToken(account.id, account.passwordHash, tokenHash(std::to_string(index)),
                                           fixture.now));
        QVERIFY(!fixture.store.withToken(tokenHash("0")).has_value());
        QVERIFY(fixture.store.withToken(tokenHash("1")).has_value());
        QVERIFY(fixture.store.withToken(tokenHash("100")).has_value());
    }

    void neitherPasswordsNorTokensAreKept()
    {
        Fixture fixture;
        const Session session = fixture.accounts.registerAccount("a@b.c", "very-secret-word", "A");
        const QByteArray contents = contentsOf(fixture.folder.path());
        QVERIFY(contents.contains("a@b.c")); // The search finds what is there.
        QVERIFY(contents.contains("$argon2id$"));
        QVERIFY(!contents.contains("very-secret-word"));
        QVERIFY(!contents.contains(QByteArray::fromStdString(session.token)));
    }

    void tokensAreNeverTheSame()
    {
        std::set<std::string> tokens;
        for (int index = 0; index < 1000; ++index)
            tokens.insert(newSessionToken());
        QCOMPARE(tokens.size(), std::size_t{1000});
    }

    void equalPasswordsHaveDifferentHashes()
    {
        const PasswordHasher hasher(PasswordCost{1, 8192});
        const std::string first = hasher.hash("secret");
        QVERIFY(first != hasher.hash("secret"));
        QVERIFY(hasher.matches(first, "secret"));
        QVERIFY(!hasher.matches(first, "Secret"));
        QVERIFY(!hasher.matches(first, std::string("secret\0x", 8)));
        QVERIFY(!hasher.matches("rubbish", "secret"));
        QVERIFY(!hasher.matchesNothing("secret"));
    }

    void failuresAreForgottenAfterTheWindow()
    {
        TimePoint now = at(std::chrono::year(2026) / 1 / 1, 0ms);
        LoginLimiter limiter(LoginLimits{2, 100, 15min, 1000}, [&now] { return now; });
        QVERIFY(limiter.admit("1.2.3.4", "a@b.c"));
        QVERIFY(limiter.admit("1.2.3.4", "a@b.c"));
        QVERIFY(!limiter.admit("1.2.3.4", "a@b.c"));
        QVERIFY(limiter.admit("5.6.7.8", "a@b.c")); // The owner elsewhere is not locked out.
        now += 15min - 1ms;
        QVERIFY(!limiter.admit("1.2.3.4", "a@b.c"));
        now += 1ms;
        QVERIFY(limiter.admit("1.2.3.4", "a@b.c"));
    }

    void concurrentGuessesCannotSlipThroughTogether()
    {
        LoginLimiter limiter(LoginLimits{10, 1000, 15min, 1000}, systemTime);
        std::atomic<int> admitted = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < 8; ++index)
            threads.emplace_back([&] {
                for (int count = 0; count < 10; ++count)
                    admitted += limiter.admit("1.2.3.4", "a@b.c") ? 1 : 0;
            });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(admitted.load(), 10);
    }

    void aFloodOfNamesTakesNoMemoryWithoutEnd()
    {
        TimePoint now = at(std::chrono::year(2026) / 1 / 1, 0ms);
        LoginLimiter limiter(LoginLimits{2, 1'000'000, 15min, 100}, [&now] { return now; });
        for (int index = 0; index < 10'000; ++index) {
            now += 1ms;
            QVERIFY(limiter.admit("1.2.3.4", std::to_string(index)));
            QVERIFY(limiter.size() <= 100);
        }
    }

    void tablesOfANewerProgramAreLeftAlone()
    {
        QTemporaryDir folder;
        const std::string path = folder.filePath(QStringLiteral("talvenor-service.db")).toStdString();
        {
            sqlite::Connection connection(path);
            connection.execute("PRAGMA user_version = " + std::to_string(newestSchemaVersion() + 1));
        }
        QVERIFY_EXCEPTION_THROWN(SqliteDatabase(folder.path().toStdString()), std::runtime_error);
        sqlite::Connection connection(path);
        const auto query = connection.query("SELECT count(*) FROM sqlite_schema");
        QVERIFY(query->step());
        QCOMPARE(query->integer(0), std::int64_t{0});
    }

    void manyProcessesMayStartAtOnce()
    {
        QTemporaryDir folder;
        std::atomic<int> opened = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < 8; ++index)
            threads.emplace_back([&] {
                SqliteDatabase database(folder.path().toStdString());
                SqliteAccountStore store(database);
                opened += store.withEmail("a@b.c").has_value() ? 0 : 1;
            });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(opened.load(), 8);
    }

    void foreignKeysHoldOnEveryConnection()
    {
        Fixture fixture;
        const auto first = fixture.database.connection();
        const auto second = fixture.database.connection(); // a new one, as the first is on loan
        for (sqlite::Connection *connection : {&*first, &*second}) {
            QVERIFY_EXCEPTION_THROWN(
                connection->execute(
                    "INSERT INTO tokens (hash, account_id, created_at) VALUES (x'00', 99, 0)"),
                sqlite::Error);
        }
    }

    void aTransactionThatIsNotCommittedLeavesNothing()
    {
        Fixture fixture;
        const auto connection = fixture.database.connection();
        {
            sqlite::Transaction transaction(*connection);
            connection->execute("INSERT INTO accounts (email, name, password_hash, role, tier, created_at) "
                                "VALUES ('a@b.c', 'A', 'x', 'user', 'free', 0)");
        }
        QVERIFY(!fixture.store.withEmail("a@b.c").has_value());
    }

    void logLinesCannotBeForged()
    {
        std::array<int, 2> ends{};
        QCOMPARE(::pipe(ends.data()), 0);
        Log log(ends[1]);
        log.info(
            "request",
            {{"path", "/a\nerror forged b=c \"q\" %41"}, {"empty", ""}, {"long", std::string(500, 'x')}});
        ::close(ends[1]);
        std::array<char, 2000> buffer{};
        const ssize_t size = ::read(ends[0], buffer.data(), buffer.size());
        ::close(ends[0]);
        const QByteArray line(buffer.data(), size);
        QCOMPARE(line.count('\n'), 1);
        QVERIFY(line.endsWith('\n'));
        QVERIFY2(line.contains(" info request path=\"/a%0Aerror forged b=c %22q%22 %2541\" empty=\"\" long="),
                 line.constData());
        QVERIFY(line.size() < 400);
    }
};

QTEST_GUILESS_MAIN(AccountsTest)
#include "AccountsTest.moc"
