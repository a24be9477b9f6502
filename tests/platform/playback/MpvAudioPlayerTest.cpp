#include "PlaybackDesktop.h"

#include "foundation/LocalizedError.h"
#include "platform/Formatting.h"
#include "platform/linux/media/LibavAudioFile.h"
#include "platform/linux/media/LinuxMedia.h"
#include "platform/linux/playback/LinuxPlayback.h"
#include "support/Await.h"
#include "support/DecodedAudio.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

#include <clocale>
#include <cmath>

using namespace talvenor;
using namespace talvenor::test;

namespace {

void putFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::unique_ptr<AudioPlayer> playerOf(const QString &path)
{
    return Platform::shared().createAudioPlayer(path);
}

/// The text of the error with which loading fails; empty if it does not.
QString failureOf(const QString &path)
{
    try {
        static_cast<void>(playerOf(path));
    } catch (const PlatformError &error) {
        return error.errorDescription();
    }
    return {};
}

} // namespace

/// The player where there is no sound server: files good and bad, and the surroundings that it must not
/// touch.
class MpvAudioPlayerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_localeBefore = std::setlocale(LC_NUMERIC, nullptr);
        installLinuxMedia(Platform::shared());
        installLinuxPlayback(Platform::shared());
        QVERIFY(m_folder.isValid());
        makeToneFile(m_good, 1'000, 5);
    }

    void aFileTellsItsLengthWithoutASoundServer()
    {
        QElapsedTimer time;
        time.start();
        const auto player = playerOf(m_good);
        player->prepareToPlay();
        qInfo("opened and prepared in %.1f ms", double(time.nsecsElapsed()) / 1e6);
        QVERIFY(std::abs(player->duration() - 5) < 0.05);
        QCOMPARE(player->currentTime(), 0.0);
        QVERIFY(!player->isPlaying());
    }

    void withoutASoundServerPlaybackEndsAtOnce()
    {
        const LogCapture log;
        const auto player = playerOf(m_good);
        player->setCurrentTime(2);
        for (int attempt = 0; attempt < 3; ++attempt) {
            player->play();
            QVERIFY(waitUntil([&] { return !player->isPlaying(); }));
            QCOMPARE(player->currentTime(), 2.0);
        }
        QCOMPARE(log.texts(QStringLiteral("com.talvenor.app.Platform"))
                     .filter(QStringLiteral("audio output initialization failed"))
                     .size(),
                 3);
        player->setCurrentTime(9);
        QCOMPARE(player->currentTime(), player->duration());
        player->pause();
        player->stop();
    }

    void aBadFileIsRefusedAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        const QByteArray good = contentOf(m_good);
        QVERIFY(good.size() > 20'000);
        const auto add = [this](const char *what, const QByteArray &content) {
            const QString name = m_folder.filePath(QString::fromLatin1(what) + QStringLiteral(".m4a"));
            putFile(name, content);
            QTest::newRow(what) << name;
        };
        QTest::newRow("missing") << m_folder.filePath(QStringLiteral("missing.m4a"));
        QTest::newRow("a folder") << m_folder.path();
        const QString pipe = m_folder.filePath(QStringLiteral("pipe.m4a"));
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QTest::newRow("a pipe") << pipe;
        QTest::newRow("an address") << QStringLiteral("http://127.0.0.1:9/a.m4a");
        QTest::newRow("no name") << QString();
        add("empty", {});
        add("text", "These are the minutes of the meeting.\n");
        add("the head alone", good.left(2'000));
        add("nothing but the index", good.left(good.indexOf("mdat") + 4));
        add("zeros", QByteArray(100'000, '\0'));
        add("no index", good.mid(good.indexOf("mdat") - 4));
        add("a picture",
            QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNkYPhfDwAC"
                                   "hwGA60e6kgAAAABJRU5ErkJggg=="));
        add("a playlist", "#EXTM3U\n" + m_good.toUtf8() + '\n');
        add("a list of parts", "ffconcat version 1.0\nfile 'good.m4a'\n");
        add("a timeline", "# mpv EDL v0\n" + m_good.toUtf8() + '\n');
    }
    void aBadFileIsRefusedAtOnce()
    {
        QFETCH(QString, name);
        QElapsedTimer time;
        time.start();
        const QString failure = failureOf(name);
        QVERIFY(!failure.isEmpty());
        QVERIFY(!failure.contains(u'\n'));
        qInfo("%.1f ms: %s", double(time.nsecsElapsed()) / 1e6, qUtf8Printable(failure));
        QVERIFY(time.elapsed() < 2'000);
    }

    void damagedFilesNeverCrash()
    {
        const QByteArray good = contentOf(m_good);
        const QString path = m_folder.filePath(QStringLiteral("damaged.m4a"));
        int opened = 0;
        for (int attempt = 0; attempt < 40; ++attempt) {
            QByteArray bad = good;
            for (int place = attempt; place < bad.size(); place += 97 + attempt * 31)
                bad[place] = char(bad[place] ^ (1 << (attempt % 8)));
            putFile(path, bad);
            if (!failureOf(path).isEmpty())
                continue;
            ++opened;
            const auto player = playerOf(path);
            player->setCurrentTime(double(attempt % 5));
            player->play();
            QVERIFY(waitUntil([&] { return !player->isPlaying(); }));
        }
        qInfo("%d of 40 damaged files can be opened", opened);
        QVERIFY(opened < 40);
    }

    void aFileThatWasCutOffIsWhatIsThere()
    {
        const QString path = m_folder.filePath(QStringLiteral("cut.m4a"));
        putFile(path, contentOf(m_good).chopped(20'000));
        const auto player = playerOf(path);
        QVERIFY(player->duration() > 0);
    }

    void aNameOfAnyKindIsAName()
    {
        for (const QString &name :
             {QStringLiteral("Größe 100%20 \"quoted\".m4a"), QStringLiteral("-option.m4a"),
              QStringLiteral("edl:a,b;c.m4a"), QStringLiteral("会議 🎙️.m4a")}) {
            const QString path = m_folder.filePath(name);
            QVERIFY(QFile::copy(m_good, path));
            QCOMPARE(failureOf(path), QString());
        }
    }

    void aRecordingThatIsBeingWrittenCanBeLoaded()
    {
        const QString path = m_folder.filePath(QStringLiteral("growing.m4a"));
        LibavAudioFile file(path, {.sampleRate = 48'000});
        const auto record = [&file](double seconds) {
            PcmBuffer block(AudioFormat{48'000, 1}, 4'800);
            for (int count = 0; count < int(seconds * 10); ++count) {
                for (int frame = 0; frame < 4'800; ++frame)
                    block.floatChannelData()[0][frame] = 0.1F * float(std::sin(frame * 0.1309));
                file.write(block);
            }
        };
        record(0.5);
        double last = 0;
        for (int round = 1; round <= 4; ++round) {
            record(2);
            const auto player = playerOf(path);
            const double written = 0.5 + 2 * round;
            qInfo("%.1f s written, %.3f s told", written, player->duration());
            QVERIFY(player->duration() > last && player->duration() <= written + 0.1);
            QVERIFY(player->duration() > written - 2.2);
            last = player->duration();
        }
    }

    void playersThatComeAndGoLeaveNothingBehind()
    {
        const auto openFiles = [] {
            return QDir(QStringLiteral("/proc/self/fd"))
                .entryList(QDir::NoDotAndDotDot | QDir::System | QDir::Files)
                .size();
        };
        const auto threads = [] {
            return QDir(QStringLiteral("/proc/self/task"))
                .entryList(QDir::NoDotAndDotDot | QDir::Dirs)
                .size();
        };
        const auto threadsBefore = threads();
        { // the first brings what stays
            const auto player = playerOf(m_good);
            player->play();
        }
        QVERIFY(waitUntil([&] { return threads() <= threadsBefore; }));
        const auto filesBefore = openFiles();
        for (int count = 0; count < 30; ++count) {
            const auto player = playerOf(m_good);
            if (count % 3 > 0)
                player->prepareToPlay();
            if (count % 3 > 1) {
                player->setCurrentTime(2);
                player->play();
                player->setCurrentTime(3);
            }
            if (count % 2 > 0)
                QCoreApplication::processEvents();
        }
        QVERIFY(waitUntil([&] { return threads() <= threadsBefore; }));
        QVERIFY2(openFiles() <= filesBefore,
                 qPrintable(QStringLiteral("%1 then %2").arg(filesBefore).arg(openFiles())));
    }

    void peopleKeepTheirNumbersWhileTheLibraryHasItsOwn()
    {
        if (m_localeBefore == "de_DE.UTF-8") { // the inner run
            QCOMPARE(QByteArray(std::setlocale(LC_NUMERIC, nullptr)), QByteArray("C"));
            const QString size = formatByteCount(1'500'000);
            QVERIFY2(size.contains(u','), qUtf8Printable(size));
            const auto player = playerOf(m_good);
            player->play();
            QVERIFY(waitUntil([&] { return !player->isPlaying(); }));
            return;
        }
        static_cast<void>(
            outputOf(QStringLiteral("localedef"),
                     {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"),
                      QStringLiteral("UTF-8"), m_folder.filePath(QStringLiteral("de_DE.UTF-8"))}));
        QProcess inner;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LOCPATH"), m_folder.path());
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
        inner.setProcessEnvironment(environment);
        inner.setProcessChannelMode(QProcess::ForwardedChannels);
        inner.start(QCoreApplication::applicationFilePath(),
                    {QString::fromLatin1(QTest::currentTestFunction())});
        QVERIFY(inner.waitForFinished(60'000));
        QCOMPARE(inner.exitStatus(), QProcess::NormalExit);
        QCOMPARE(inner.exitCode(), 0);
        QVERIFY(QByteArray(std::setlocale(LC_NUMERIC, nullptr)) == "C");
    }

    void theUsersOwnPlayerIsNotAsked()
    {
        // A configuration and a script of mpv, which would leave a trace.
        const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/mpv");
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/scripts")));
        const QString trace = m_folder.filePath(QStringLiteral("trace"));
        putFile(folder + QStringLiteral("/mpv.conf"), "log-file=" + trace.toUtf8() + "\n");
        putFile(folder + QStringLiteral("/scripts/trace.lua"),
                "io.open(\"" + trace.toUtf8() + "\", \"w\"):close()\n");
        {
            const auto player = playerOf(m_good);
            player->play();
            QVERIFY(waitUntil([&] { return !player->isPlaying(); }));
        }
        QVERIFY(!QFile::exists(trace));
        QVERIFY(QDir(folder).removeRecursively());
    }

private:
    QByteArray m_localeBefore; ///< that the application object has set
    QTemporaryDir m_folder;
    const QString m_good = m_folder.filePath(QStringLiteral("good.m4a"));
};

QTEST_GUILESS_MAIN(MpvAudioPlayerTest)
#include "MpvAudioPlayerTest.moc"
