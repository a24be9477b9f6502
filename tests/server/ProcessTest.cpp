#include "HttpClient.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <atomic>
#include <memory>
#include <random>
#include <signal.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

using namespace talvenor;
using test::HttpAnswer;
using test::HttpClient;

namespace {

const QString program = QStringLiteral(TALVENOR_SERVICE);

struct Outcome
{
    int exitCode = -1;
    QString output;
    QString errors;
};

Outcome run(const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60'000);
    Outcome outcome;
    if (process.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = process.exitCode();
    outcome.output = QString::fromUtf8(process.readAllStandardOutput());
    outcome.errors = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}

/// The program, serving a data folder on a free port.
class Serving
{
public:
    explicit Serving(const QString &folder)
    {
        m_process.start(program, {QStringLiteral("serve"), QStringLiteral("--data"), folder,
                                  QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")});
        while (!m_output.contains('\n') && m_process.waitForReadyRead(60'000))
            m_output += m_process.readAllStandardOutput();
    }
    ~Serving() { end(SIGKILL); }
    Q_DISABLE_COPY_MOVE(Serving)

    [[nodiscard]] QByteArray firstLine() const { return m_output; }
    [[nodiscard]] QString url() const
    {
        return QString::fromUtf8(m_output.trimmed()).remove(QStringLiteral("Listening on "));
    }
    /// Sends a signal and waits for the end; the exit code, -1 after a signal that kills.
    int end(int signal)
    {
        if (m_process.state() != QProcess::NotRunning) {
            ::kill(static_cast<pid_t>(m_process.processId()), signal);
            m_process.waitForFinished(60'000);
        }
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    [[nodiscard]] QByteArray log() { return m_process.readAllStandardError(); }

private:
    QProcess m_process;
    QByteArray m_output;
};

QStringList create(const QString &folder, const QString &email, const QStringList &more = {})
{
    return QStringList{QStringLiteral("account"), QStringLiteral("create"),
                       QStringLiteral("--data"),  folder,
                       QStringLiteral("--email"), email,
                       QStringLiteral("--name"),  QStringLiteral("Anna")} +
           more;
}

QString tokenOf(const HttpAnswer &answer)
{
    return answer.object().value(QStringLiteral("token")).toString();
}

HttpAnswer login(const QString &url, const QString &email, const QString &password)
{
    return HttpClient(url).post(QStringLiteral("/auth/login"),
                                {{QStringLiteral("email"), email}, {QStringLiteral("password"), password}});
}

} // namespace

/// The program itself: its command line, its end and what it keeps.
class ProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpAndVersion()
    {
        const Outcome help = run({QStringLiteral("--help")});
        QCOMPARE(help.exitCode, 0);
        for (const char *word :
             {"serve", "account create", "account set", "--listen", "--data", "--password-stdin"})
            QVERIFY2(help.output.contains(QString::fromLatin1(word)), word);
        const Outcome version = run({QStringLiteral("--version")});
        QCOMPARE(version.exitCode, 0);
        QVERIFY(version.output.startsWith(QStringLiteral("talvenor-service ")));
    }

    void whatIsNotUnderstoodIsSaid_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("command") << QStringList{QStringLiteral("dance")};
        QTest::newRow("option") << QStringList{QStringLiteral("serve"), QStringLiteral("--fast")};
        QTest::newRow("stray word") << QStringList{QStringLiteral("serve"), QStringLiteral("now")};
        QTest::newRow("no port") << QStringList{QStringLiteral("serve"), QStringLiteral("--listen"),
                                                QStringLiteral("127.0.0.1")};
        QTest::newRow("port out of range") << QStringList{QStringLiteral("serve"), QStringLiteral("--listen"),
                                                          QStringLiteral("127.0.0.1:70000")};
        QTest::newRow("port as text") << QStringList{QStringLiteral("serve"), QStringLiteral("--listen"),
                                                     QStringLiteral("127.0.0.1:http")};
        QTest::newRow("action") << QStringList{QStringLiteral("account"), QStringLiteral("love")};
        QTest::newRow("no address") << QStringList{QStringLiteral("account"), QStringLiteral("set"),
                                                   QStringLiteral("--tier"), QStringLiteral("free")};
    }

    void whatIsNotUnderstoodIsSaid()
    {
        QFETCH(QStringList, arguments);
        const Outcome outcome = run(arguments);
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY(outcome.errors.startsWith(QStringLiteral("talvenor-service: ")));
        QVERIFY(outcome.output.isEmpty());
    }

    void whatCannotBeDoneIsSaid()
    {
        QTemporaryDir folder;
        const QString email = QStringLiteral("a@b.c");
        const QString data = folder.path();
        const Outcome tier = run(create(data, email, {QStringLiteral("--tier"), QStringLiteral("gold")}));
        QCOMPARE(tier.exitCode, 1);
        QVERIFY(tier.errors.contains(QStringLiteral("gold")));
        QCOMPARE(run(create(data, email, {QStringLiteral("--role"), QStringLiteral("king")})).exitCode, 1);
        QCOMPARE(run(create(data, QStringLiteral("nobody"))).exitCode, 1);
        QCOMPARE(run(create(data, email, {QStringLiteral("--password-stdin")}), "short\n").exitCode, 1);
        QCOMPARE(run(create(data, email)).exitCode, 0);
        QCOMPARE(run(create(data, email)).exitCode, 1); // There is one.
        const QStringList set = {QStringLiteral("account"), QStringLiteral("set"), QStringLiteral("--data"),
                                 data, QStringLiteral("--email")};
        QCOMPARE(run(set + QStringList{email}).exitCode, 1); // nothing to set
        QCOMPARE(
            run(set + QStringList{QStringLiteral("x@y.z"), QStringLiteral("--tier"), QStringLiteral("free")})
                .exitCode,
            1);
        QCOMPARE(run({QStringLiteral("serve"), QStringLiteral("--data"), data, QStringLiteral("--listen"),
                      QStringLiteral("192.0.2.1:0")})
                     .exitCode,
                 1); // not an address of this machine
    }

    void aTakenPortIsSaid()
    {
        QTemporaryDir folder;
        const Serving serving(folder.path());
        const Outcome second =
            run({QStringLiteral("serve"), QStringLiteral("--data"), folder.path(), QStringLiteral("--listen"),
                 QStringLiteral("127.0.0.1:%1").arg(QUrl(serving.url()).port())});
        QCOMPARE(second.exitCode, 1);
        QVERIFY2(second.errors.contains(QStringLiteral("in use")), qPrintable(second.errors));
    }

    void aDatabaseThatIsNoneIsLeftAlone()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("talvenor-service.db")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QByteArray letter = QByteArray("Dear diary, this is no database at all. ").repeated(200);
        file.write(letter);
        file.close();
        const Outcome outcome = run({QStringLiteral("serve"), QStringLiteral("--data"), folder.path(),
                                     QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY(!outcome.errors.isEmpty());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), letter);
    }

    void aDataFolderThatIsAFileIsSaid()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("file"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        const Outcome outcome = run({QStringLiteral("serve"), QStringLiteral("--data"), path,
                                     QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY(!outcome.errors.isEmpty());
    }

    void theFirstLineTellsWhereItListens()
    {
        QTemporaryDir folder;
        const QString data = folder.filePath(QStringLiteral("deep/er"));
        Serving serving(data);
        const QUrl url(serving.url());
        QVERIFY(serving.firstLine().startsWith("Listening on http://127.0.0.1:"));
        QVERIFY(serving.firstLine().endsWith("/api\n"));
        QVERIFY(url.port() > 0);
        struct stat info
        {
        };
        QCOMPARE(::stat(QFile::encodeName(data).constData(), &info), 0);
        QCOMPARE(info.st_mode & 0777U, 0700U);
        QCOMPARE(::stat(QFile::encodeName(data + QStringLiteral("/talvenor-service.db")).constData(), &info),
                 0);
        QCOMPARE(info.st_mode & 0777U, 0600U);
        for (const int signal : {SIGTERM}) {
            QCOMPARE(serving.end(signal), 0);
            QVERIFY(serving.log().contains(" info stopped"));
        }
    }

    void interruptingEndsItInOrder()
    {
        QTemporaryDir folder;
        Serving serving(folder.path());
        QCOMPARE(serving.end(SIGINT), 0);
    }

    void theDataFolderIsTheUsersByDefault()
    {
        // The test runs in a home of its own.
        QVERIFY(run({QStringLiteral("account"), QStringLiteral("create"), QStringLiteral("--email"),
                     QStringLiteral("home@b.c"), QStringLiteral("--name"), QStringLiteral("Home")})
                    .exitCode == 0);
        QVERIFY(QFileInfo::exists(qEnvironmentVariable("XDG_DATA_HOME") +
                                  QStringLiteral("/talvenor-service/talvenor-service.db")));
    }

    void accountsAreMadeAndChangedWhileItRuns()
    {
        QTemporaryDir folder;
        const Serving serving(folder.path());
        const QString email = QStringLiteral("a@b.c");
        const Outcome made = run(create(folder.path(), email));
        QCOMPARE(made.exitCode, 0);
        const QString marker = QStringLiteral("Password: ");
        QVERIFY(made.output.contains(marker));
        const QString password = made.output.mid(made.output.indexOf(marker) + marker.size()).trimmed();
        QCOMPARE(password.size(), 16);
        const HttpAnswer answer = login(serving.url(), email, password);
        QCOMPARE(answer.status, 200);
        HttpClient client(serving.url());
        client.token = tokenOf(answer);
        const Outcome set =
            run({QStringLiteral("account"), QStringLiteral("set"), QStringLiteral("--data"), folder.path(),
                 QStringLiteral("--email"), email, QStringLiteral("--tier"), QStringLiteral("lifetime"),
                 QStringLiteral("--role"), QStringLiteral("admin")});
        QCOMPARE(set.exitCode, 0);
        const QJsonObject profile = client.get(QStringLiteral("/auth/me")).object();
        QCOMPARE(profile[u"subscription_tier"].toString(), QStringLiteral("lifetime"));
        QCOMPARE(profile[u"role"].toString(), QStringLiteral("admin"));
        const Outcome piped = run(
            create(folder.path(), QStringLiteral("b@b.c"),
                   {QStringLiteral("--password-stdin"), QStringLiteral("--tier"), QStringLiteral("premium")}),
            "päss wörd\n");
        QCOMPARE(piped.exitCode, 0);
        QVERIFY(!piped.output.contains(QStringLiteral("päss")));
        QCOMPARE(login(serving.url(), QStringLiteral("b@b.c"), QStringLiteral("päss wörd")).status, 200);
    }

    void aRestartKeepsEverything()
    {
        QTemporaryDir folder;
        QString token;
        {
            Serving serving(folder.path());
            HttpClient client(serving.url());
            QCOMPARE(client.signUp(QStringLiteral("a@b.c")).status, 201);
            QCOMPARE(
                client
                    .post(QStringLiteral("/auth/record"),
                          {{QStringLiteral("title"), QStringLiteral("x")}, {QStringLiteral("duration"), 1}})
                    .status,
                201);
            token = client.token;
            QCOMPARE(serving.end(SIGTERM), 0);
        }
        const Serving serving(folder.path());
        HttpClient client(serving.url());
        client.token = token;
        const HttpAnswer profile = client.get(QStringLiteral("/auth/me"));
        QCOMPARE(profile.status, 200);
        QCOMPARE(profile.object()[u"recordings_count"].toInteger(-1), 1);
        QCOMPARE(login(serving.url(), QStringLiteral("a@b.c"), QStringLiteral("secret")).status, 200);
    }

    void noAcknowledgedWriteIsLostWhenItIsKilled()
    {
        QTemporaryDir folder;
        const QString email = QStringLiteral("a@b.c");
        QCOMPARE(run(create(folder.path(), email,
                            {QStringLiteral("--tier"), QStringLiteral("premium"),
                             QStringLiteral("--password-stdin")}),
                     "secret\n")
                     .exitCode,
                 0);
        QString token;
        std::mt19937 random(20260101); // the same moments every time, as far as the machine allows
        std::int64_t acknowledged = 0;
        std::int64_t uncertain = 0; // sent, and killed before the answer
        constexpr int writers = 4;
        for (int round = 0; round < 5; ++round) {
            Serving serving(folder.path());
            if (token.isEmpty())
                token = tokenOf(login(serving.url(), email, QStringLiteral("secret")));
            HttpClient reader(serving.url());
            reader.token = token;
            const std::int64_t kept =
                reader.get(QStringLiteral("/auth/me")).object()[u"recordings_count"].toInteger(-1);
            QVERIFY2(kept >= acknowledged && kept <= acknowledged + uncertain,
                     qPrintable(QStringLiteral("%1 of %2 to %3")
                                    .arg(kept)
                                    .arg(acknowledged)
                                    .arg(acknowledged + uncertain)));
            acknowledged = kept;
            uncertain = 0;
            std::atomic<int> taken = 0;
            const int enough = 20 + static_cast<int>(random() % 180);
            std::vector<std::thread> threads;
            for (int index = 0; index < writers; ++index) {
                threads.emplace_back([&] {
                    HttpClient client(serving.url());
                    client.token = token;
                    for (;;) {
                        const int status = client
                                               .post(QStringLiteral("/auth/record"),
                                                     {{QStringLiteral("title"), QStringLiteral("x")},
                                                      {QStringLiteral("duration"), 1}})
                                               .status;
                        if (status != 201)
                            return;
                        ++taken;
                    }
                });
            }
            const bool wrote = QTest::qWaitFor([&] { return taken.load() >= enough; }, 60'000);
            serving.end(SIGKILL);
            for (std::thread &thread : threads)
                thread.join();
            QVERIFY(wrote);
            acknowledged += taken;
            uncertain = writers;
        }
        const Serving serving(folder.path());
        HttpClient reader(serving.url());
        reader.token = token;
        const std::int64_t kept =
            reader.get(QStringLiteral("/auth/me")).object()[u"recordings_count"].toInteger(-1);
        QVERIFY(kept >= acknowledged && kept <= acknowledged + uncertain);
    }

    void theLogHoldsNoSecrets()
    {
        QTemporaryDir folder;
        Serving serving(folder.path());
        HttpClient client(serving.url());
        QCOMPARE(
            client.signUp(QStringLiteral("secret-address@b.c"), QStringLiteral("secret-password")).status,
            201);
        QCOMPARE(client.get(QStringLiteral("/auth/me?secret-query=1")).status, 200);
        QCOMPARE(client.get(QStringLiteral("/not%0Aforged")).status, 404);
        QCOMPARE(client
                     .post(QStringLiteral("/auth/record"),
                           {{QStringLiteral("title"), QStringLiteral("secret-title")},
                            {QStringLiteral("duration"), 1}})
                     .status,
                 201);
        QCOMPARE(serving.end(SIGTERM), 0);
        const QByteArray log = serving.log();
        QVERIFY(log.contains("method=GET path=/api/auth/me status=200"));
        QVERIFY(!log.contains("secret"));
        QVERIFY(!log.contains(client.token.toUtf8()));
    }
};

QTEST_GUILESS_MAIN(ProcessTest)
#include "ProcessTest.moc"
