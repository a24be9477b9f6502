#include "platform/linux/network/LibsecretStore.h"
#include "support/Await.h"
#include "support/LogCapture.h"

#include <QDBusConnection>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTest>

using namespace talvenor;
using test::LogCapture;

namespace {

const auto kService = QStringLiteral("app.talvenor.auth");
const auto kAccount = QStringLiteral("authToken");
const auto kLog = QStringLiteral("com.talvenor.app.Platform");
const QByteArray kToken = "a-token-that-must-not-be-written";

/// All files below the home of the test whose content holds the token.
QStringList filesWithToken()
{
    QStringList files;
    QDirIterator all(qEnvironmentVariable("TALVENOR_DESKTOP"), QDir::Files | QDir::Hidden,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        QFile file(all.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains(kToken))
            files.append(file.fileName());
    }
    return files;
}

} // namespace

/// The store where there is none, or a broken one: three surroundings, in which the same holds.
class NoSecretStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The order counts: a connection to a bus, once made, stays for the process.

    void withoutABusSecretsLastForThisRun() { secretsLastForThisRun(QStringLiteral("no secret store")); }

    void withoutAStoreOnTheBusSecretsLastForThisRun()
    {
        startBus();
        secretsLastForThisRun(QStringLiteral("no secret store"));
    }

    void withABrokenStoreSecretsLastForThisRun()
    {
        // It bears the name and has nothing behind it. Qt's own thread refuses whatever it is asked.
        auto connection = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                                        QStringLiteral("broken store"));
        QVERIFY(connection.registerService(QStringLiteral("org.freedesktop.secrets")));
        secretsLastForThisRun(QStringLiteral("secret store fails"));
        QVERIFY(connection.unregisterService(QStringLiteral("org.freedesktop.secrets")));
        QDBusConnection::disconnectFromBus(QStringLiteral("broken store"));
    }

    void theEndOfTheBusIsNotTheEndOfTheProgram()
    {
        LibsecretStore store;
        store.save(kService, kAccount, kToken);
        m_bus.terminate();
        QVERIFY(m_bus.waitForFinished());
        QTest::qWait(200); // for what GLib's thread might do about it
        QCOMPARE(store.load(kService, kAccount), kToken);
        store.remove(kService, kAccount);
        QVERIFY(!store.load(kService, kAccount));
    }

private:
    void secretsLastForThisRun(const QString &reason)
    {
        LogCapture log;
        {
            LibsecretStore store;
            QVERIFY(!store.load(kService, kAccount));
            store.save(kService, kAccount, kToken);
            QCOMPARE(store.load(kService, kAccount), kToken);
            store.save(kService, kAccount, kToken + "2");
            QCOMPARE(store.load(kService, kAccount), kToken + "2");
            QVERIFY(!store.load(kService, QStringLiteral("another")));
            store.remove(kService, kAccount);
            QVERIFY(!store.load(kService, kAccount));
            store.save(kService, kAccount, kToken);
        }
        QVERIFY(!LibsecretStore().load(kService, kAccount)); // the next run asks again
        QCOMPARE(filesWithToken(), QStringList());
        const QStringList lines = log.texts(kLog);
        QCOMPARE(lines.size(), 2); // one for each of the two stores
        for (const QString &line : lines) {
            QVERIFY2(line.contains(reason), qPrintable(line));
            QVERIFY(!line.contains(QString::fromLatin1(kToken)));
        }
    }

    /// A session bus that cannot start anything by itself.
    void startBus()
    {
        const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
        QFile configuration(folder + QStringLiteral("/bare-bus.conf"));
        QVERIFY(configuration.open(QIODevice::WriteOnly));
        configuration.write("<busconfig><type>session</type><listen>unix:path=" + folder.toUtf8() +
                            "/bare-bus</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                            "<allow own=\"*\"/><allow eavesdrop=\"true\"/></policy></busconfig>");
        configuration.close();
        m_bus.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--nofork"), QStringLiteral("--config-file=") + configuration.fileName()});
        QVERIFY(test::waitUntil([&] { return QFile::exists(folder + QStringLiteral("/bare-bus")); }));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder.toUtf8() + "/bare-bus");
    }

    QProcess m_bus;
};

QTEST_GUILESS_MAIN(NoSecretStoreTest)
#include "NoSecretStoreTest.moc"
