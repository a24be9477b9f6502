#include "platform/linux/network/LibsecretStore.h"
#include "SecretServiceControl.h"
#include "foundation/Task.h"
#include "support/Await.h"
#include "support/LogCapture.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QProcess>
#include <QScopeGuard>
#include <QSocketNotifier>
#include <QTest>

#include <unistd.h>

using namespace talvenor;
using test::LogCapture;
using test::SecretServiceControl;

namespace {

const auto kService = QStringLiteral("app.talvenor.auth");
const auto kAccount = QStringLiteral("authToken");
const auto kLog = QStringLiteral("com.talvenor.app.Platform");

/// The desktop's part that shows questions; this one never shows any.
class UnansweredPrompter : public QDBusVirtualObject
{
public:
    UnansweredPrompter()
    {
        if (!m_bus.registerVirtualObject(QStringLiteral("/org/gnome/keyring/Prompter"), this) ||
            !m_bus.registerService(kName))
            qFatal("the desktop has a prompter already");
    }
    ~UnansweredPrompter() override { goAway(); }
    Q_DISABLE_COPY_MOVE(UnansweredPrompter)

    /// How many questions have been announced.
    [[nodiscard]] int questions() const { return m_questions; }

    void goAway()
    {
        m_bus.unregisterService(kName);
        m_bus.unregisterObject(QStringLiteral("/org/gnome/keyring/Prompter"));
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == QLatin1StringView("BeginPrompting"))
            ++m_questions;
        return connection.send(message.createReply());
    }

private:
    const QString kName = QStringLiteral("org.gnome.keyring.SystemPrompter");
    QDBusConnection m_bus = QDBusConnection::sessionBus();
    int m_questions = 0;
};

} // namespace

/// The store against a real secret service.
class LibsecretStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { LibsecretStore().remove(kService, kAccount); }

    void whatWasNeverSavedIsAbsent()
    {
        const LogCapture log;
        QVERIFY(!LibsecretStore().load(kService, kAccount));
        LibsecretStore().remove(kService, kAccount); // and can be removed all the same
        QVERIFY(log.texts(kLog).isEmpty());
    }

    void aSecretOutlivesItsStore_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("text") << QByteArray("eyJhbGciOi.token");
        QTest::newRow("beyond ASCII") << QByteArray("\xc3\xa4\xe2\x82\xac\xf0\x9f\x8e\xa4");
        QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x80\xc3");
        QTest::newRow("zero bytes") << QByteArray("a\0b\0", 4);
        QTest::newRow("large") << QByteArray(60'000, 'x');
    }

    void aSecretOutlivesItsStore()
    {
        QFETCH(QByteArray, value);
        LibsecretStore().save(kService, kAccount, value);
        QCOMPARE(LibsecretStore().load(kService, kAccount), value);
    }

    void theItemIsFoundByItsTwoAttributes()
    {
        LibsecretStore().save(kService, kAccount, "token");
        const QStringList items = SecretServiceControl::items(kService, kAccount);
        QCOMPARE(items.size(), 1);
        auto attributes = SecretServiceControl::attributesOf(items.constFirst());
        attributes.remove(QStringLiteral("xdg:schema")); // the library's own mark
        QCOMPARE(attributes, (QMap<QString, QString>{{QStringLiteral("service"), kService},
                                                     {QStringLiteral("account"), kAccount}}));
    }

    void savingReplaces()
    {
        LibsecretStore store;
        store.save(kService, kAccount, "first");
        store.save(kService, kAccount, "second");
        QCOMPARE(store.load(kService, kAccount), QByteArray("second"));
        QCOMPARE(SecretServiceControl::items(kService, kAccount).size(), 1);
    }

    void removingRemovesThisOneAlone()
    {
        LibsecretStore store;
        const auto other = QStringLiteral("another");
        store.save(kService, kAccount, "token");
        store.save(kService, other, "stays");
        store.remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount));
        QVERIFY(test::waitUntil([] { return SecretServiceControl::items(kService, kAccount).isEmpty(); }));
        QCOMPARE(store.load(kService, other), QByteArray("stays"));
        store.remove(kService, other);
    }

    void whatAnotherProgramRemovesIsGone()
    {
        LibsecretStore store;
        store.save(kService, kAccount, "token");
        QCOMPARE(store.load(kService, kAccount), QByteArray("token"));
        LibsecretStore().remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount));
    }

    void aLockedStoreIsNotAnEmptyOne()
    {
        LibsecretStore().save(kService, kAccount, "token");
        SecretServiceControl::lock();
        const auto unlock = qScopeGuard([] { SecretServiceControl::unlock(); });
        const QString item = SecretServiceControl::items(kService, kAccount).value(0);
        QVERIFY(SecretServiceControl::isLocked(item));

        LogCapture log;
        LibsecretStore store;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!store.load(kService, kAccount));
        QVERIFY(!store.load(kService, kAccount));
        QVERIFY2(timer.elapsed() < 10'000, "reading has waited for somebody to unlock the store");
        QCOMPARE(log.texts(kLog).filter(QStringLiteral("locked or not set up")).size(), 1);

        QCOMPARE(SecretServiceControl::items(kService, kAccount), QStringList{item}); // still there
        SecretServiceControl::unlock();
        QCOMPARE(store.load(kService, kAccount), QByteArray("token"));
    }

    void aStoreThatIsLockedLaterHasForgottenNothing()
    {
        LibsecretStore().save(kService, kAccount, "token");
        LibsecretStore store;
        QCOMPARE(store.load(kService, kAccount), QByteArray("token"));
        SecretServiceControl::lock();
        const auto unlock = qScopeGuard([] { SecretServiceControl::unlock(); });
        // Without it the service would refuse the next request, and that refusal would remove it for good.
        QCOMPARE(store.load(kService, kAccount), QByteArray("token"));
        SecretServiceControl::unlock();
        QCOMPARE(store.load(kService, kAccount), QByteArray("token"));
        LibsecretStore().remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount)); // an answer is more than what is remembered
    }

    void aStoreThatHangsLaterHasForgottenNothing()
    {
        LibsecretStore store;
        store.save(kService, kAccount, "token");
        SecretServiceControl::freeze();
        const auto thaw = qScopeGuard([] { SecretServiceControl::thaw(); });
        QCOMPARE(store.load(kService, kAccount), QByteArray("token"));
        store.remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount));
        SecretServiceControl::thaw();
        QVERIFY(test::waitUntil([] { return SecretServiceControl::items(kService, kAccount).isEmpty(); }));
    }

    void whatIsSavedToALockedStoreIsWrittenOnceItIsUnlocked()
    {
        LibsecretStore().save(kService, kAccount, "old");
        SecretServiceControl::lock();
        const auto unlock = qScopeGuard([] { SecretServiceControl::unlock(); });
        const QStringList items = SecretServiceControl::items(kService, kAccount);
        UnansweredPrompter prompter;
        LogCapture log;
        LibsecretStore store;
        store.save(kService, kAccount, "new-token");
        QVERIFY(test::waitUntil([&] { return prompter.questions() == 1; }));

        // The question is open and nobody waits for its answer.
        QCOMPARE(store.load(kService, kAccount), QByteArray("new-token"));
        store.save(kService, kAccount, "newer-token");
        QCOMPARE(store.load(kService, kAccount), QByteArray("newer-token"));
        QCOMPARE(SecretServiceControl::items(kService, kAccount), items);

        SecretServiceControl::unlock();
        prompter.goAway();
        QVERIFY(test::waitUntil(
            [] { return LibsecretStore().load(kService, kAccount) == QByteArray("newer-token"); }));
        QCOMPARE(store.load(kService, kAccount), QByteArray("newer-token"));
        QCOMPARE(prompter.questions(), 1);
        QVERIFY(!log.lines().join(QLatin1Char('\n')).contains(QStringLiteral("-token")));
    }

    void whatALockedStoreLacksIsMadeUpForAtTheNextReading()
    {
        LibsecretStore().save(kService, kAccount, "old");
        SecretServiceControl::lock();
        const auto unlock = qScopeGuard([] { SecretServiceControl::unlock(); });
        UnansweredPrompter prompter;
        LibsecretStore store;
        store.remove(kService, kAccount); // a sign-out
        QVERIFY(test::waitUntil([&] { return prompter.questions() == 1; }));
        prompter.goAway(); // the question is over without an answer
        QTest::qWait(1000);
        SecretServiceControl::unlock(); // by another program
        QTest::qWait(200);
        QVERIFY(!store.load(kService, kAccount));
        QVERIFY(test::waitUntil([] { return SecretServiceControl::items(kService, kAccount).isEmpty(); }));
    }

    void theEndOfTheProgramDoesNotWaitForAnAnswer()
    {
        LibsecretStore().save(kService, kAccount, "token");
        SecretServiceControl::lock();
        const auto unlock = qScopeGuard([] { SecretServiceControl::unlock(); });
        UnansweredPrompter prompter;
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--ask")});
        QVERIFY(test::waitUntil([&] { return prompter.questions() == 1; }));
        program.closeWriteChannel(); // the sign to end
        QVERIFY(test::waitUntil([&] { return program.state() == QProcess::NotRunning; }, 20'000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        prompter.goAway();
    }

    void whatIsRemovedWhileTheStoreIsLockedGoesOnceItIsUnlocked()
    {
        LibsecretStore().save(kService, kAccount, "token");
        SecretServiceControl::lock();
        const auto unlock = qScopeGuard([] { SecretServiceControl::unlock(); });
        UnansweredPrompter prompter;
        LibsecretStore store;
        store.remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount));
        QVERIFY(test::waitUntil([&] { return prompter.questions() == 1; }));
        QCOMPARE(SecretServiceControl::items(kService, kAccount).size(), 1);

        SecretServiceControl::unlock();
        prompter.goAway();
        QVERIFY(test::waitUntil([] { return SecretServiceControl::items(kService, kAccount).isEmpty(); }));
        QVERIFY(!store.load(kService, kAccount));
    }

    void aStoreThatHangsDoesNotHoldTheWindow()
    {
        LibsecretStore().save(kService, kAccount, "token");
        LibsecretStore store; // which has never seen it
        LogCapture log;
        SecretServiceControl::freeze();
        const auto thaw = qScopeGuard([] { SecretServiceControl::thaw(); });
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!store.load(kService, kAccount)); // not known, hence absent
        QVERIFY2(timer.elapsed() < 10'000, "D-Bus gives up after 25 s only");
        QCOMPARE(
            log.texts(kLog),
            QStringList{QStringLiteral(
                "The secret store does not answer; what this run has not seen of it counts as absent.")});
        timer.restart();
        store.remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount)); // removed for this program at once
        QVERIFY2(timer.elapsed() < 1'000, "a removal is not waited for");

        SecretServiceControl::thaw();
        QVERIFY(test::waitUntil([] { return SecretServiceControl::items(kService, kAccount).isEmpty(); }));
    }

    void aSignInDoesNotWaitForAStoreThatHangs()
    {
        LibsecretStore store;
        SecretServiceControl::freeze();
        const auto thaw = qScopeGuard([] { SecretServiceControl::thaw(); });
        QVERIFY(!store.load(kService, kAccount));
        auto signIn = [&store] {
            store.save(kService, kAccount, "token");
            return store.load(kService, kAccount);
        };
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(test::await(onGeneralPool(std::move(signIn))), QByteArray("token"));
        QVERIFY2(timer.elapsed() < 10'000, "D-Bus gives up after 25 s only");
        SecretServiceControl::thaw();
        QVERIFY(test::waitUntil([] { return SecretServiceControl::items(kService, kAccount).size() == 1; }));
    }

    void ofTwoWishesForAStoreThatHangsTheLaterOneCounts()
    {
        LibsecretStore store;
        store.save(kService, kAccount, "old");
        SecretServiceControl::freeze();
        const auto thaw = qScopeGuard([] { SecretServiceControl::thaw(); });
        store.remove(kService, kAccount);
        Task<> saved = onGeneralPool([&store] { store.save(kService, kAccount, "new"); });
        QVERIFY(test::waitUntil([&] { return store.load(kService, kAccount) == QByteArray("new"); }));
        SecretServiceControl::thaw();
        test::await(std::move(saved));
        QVERIFY(
            test::waitUntil([] { return LibsecretStore().load(kService, kAccount) == QByteArray("new"); }));
    }

    void theEndOfTheProgramDoesNotWaitForAStoreThatHangs()
    {
        LibsecretStore().save(kService, kAccount, "token");
        SecretServiceControl::freeze();
        const auto thaw = qScopeGuard([] { SecretServiceControl::thaw(); });
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--read")});
        QVERIFY(program.waitForStarted());
        QElapsedTimer timer;
        timer.start();
        program.closeWriteChannel();
        QVERIFY(test::waitUntil([&] { return program.state() == QProcess::NotRunning; }, 20'000));
        QVERIFY2(timer.elapsed() < 15'000, "D-Bus gives up after 25 s only");
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    void theStoreMayBeUsedFromManyThreads()
    {
        const auto store = std::make_shared<LibsecretStore>();
        store->save(kService, kAccount, "token");
        std::vector<Task<int>> tasks;
        for (int thread = 0; thread < 8; ++thread) {
            tasks.push_back(onGeneralPool([store] {
                int found = 0;
                for (int i = 0; i < 10; ++i)
                    found += store->load(kService, kAccount) == QByteArray("token") ? 1 : 0;
                return found;
            }));
        }
        for (auto &task : tasks)
            QCOMPARE(test::await(std::move(task)), 10);
    }

    void readingIsQuick()
    {
        LibsecretStore store;
        store.save(kService, kAccount, "token");
        QBENCHMARK
        {
            QVERIFY(store.load(kService, kAccount).has_value());
        }
    }
};

/// The program that a test ends while the user is being asked.
static int runWithOpenQuestion()
{
    LibsecretStore store;
    store.save(kService, kAccount, "never-written");
    QSocketNotifier endSign(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&endSign, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

/// The program that a test ends while the store is being read on the pool.
static int runWithOpenRead()
{
    const auto store = std::make_shared<LibsecretStore>();
    startOnGeneralPool([store] { static_cast<void>(store->load(kService, kAccount)); });
    QSocketNotifier endSign(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&endSign, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "--read") == 0)
        return runWithOpenRead();
    if (argc == 2 && qstrcmp(argv[1], "--ask") == 0)
        return runWithOpenQuestion();
    LibsecretStoreTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "LibsecretStoreTest.moc"
